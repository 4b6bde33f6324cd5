#include "features/TableWriter.h"

#include "Command.h"
#include "features/TableHead.h"

#include <utility>

namespace Zantrix::Cli {

TableWriter::TableWriter(TableTarget target, const PreviousTable* pPrevious)
    : m_target(std::move(target)), m_pPrevious(pPrevious), m_output(pPrevious) {
    // What changes from now on is newer than the table.
    std::timespec_get(&m_started, TIME_UTC);
    if (m_target.hasManifest) {
        m_manifest.emplace(m_target.definition, m_target.inputs);
    }
}

bool TableWriter::open() {
    if (!m_output.output().open(m_target.path)) {
        return false;
    }
    if (m_manifest && !canDrop()) {
        throw UsageError((isNpy() ? "--format npy" : "--shard or --resume") +
                         std::string(" needs a file to write, which ") + m_target.path + " is not");
    }
    return !m_manifest || m_manifest->open(m_target.manifestPath());
}

bool TableWriter::begin(const std::vector<std::string>& columns) {
    m_columns = columns;
    m_bBegun = true;
    return writeHead();
}

bool TableWriter::beginInput(const std::string& name, std::uint64_t rate) {
    m_uiInputStart = m_output.position();
    m_bWasBegun = m_bBegun;
    m_bIsCopy = false;
    m_entry = {name, true, rate, m_uiRows};
    return true;
}

bool TableWriter::addRows(std::string_view bytes, std::size_t rows) {
    m_entry.rowCount += rows;
    m_entry.byteCount += bytes.size();
    return m_output.write(bytes);
}

bool TableWriter::copyRows(const PreviousTable::Rows& rows) {
    m_bIsCopy = true;
    m_entry.rowCount = rows.rowCount;
    m_entry.byteCount = rows.byteCount;
    return m_output.copy(rows.offset, rows.byteCount);
}

bool TableWriter::endInput(double firstTime, std::uint64_t digest) {
    m_entry.firstTime = firstTime;
    m_entry.digest = digest;
    m_uiRows += m_entry.rowCount;
    ++(m_bIsCopy ? m_uiCopied : m_uiComputed);
    if (!m_manifest) {
        return true;
    }
    // Only now are the columns settled.
    return (m_entry.rowCount == 0 || m_manifest->setColumns(m_columns)) && m_manifest->add(m_entry);
}

bool TableWriter::dropInput() {
    if (!m_output.withdraw(m_uiInputStart)) {
        return false;
    }
    if (!m_bWasBegun) {
        m_bBegun = false;
        m_columns.clear();
    }
    return true;
}

bool TableWriter::addFailed(const std::string& name) {
    return !wantsEmpty() || m_manifest->add({name, false});
}

bool TableWriter::finish() {
    if (!m_bBegun && !writeHead()) {
        return false;
    }
    if (isUnchanged()) {
        return true;
    }
    const std::string text = head(m_uiRows);
    Output& output = m_output.output();
    if (!m_output.settle() || (isNpy() && !output.overwrite(0, text.data(), text.size()))) {
        return false;
    }
    if (!m_manifest) {
        return output.commit();
    }
    output.setTime(m_started);
    return (!m_bBegun || m_manifest->setColumns(m_columns)) && m_manifest->finish(m_uiRows, output.position()) &&
           commitTable(output, m_manifest->output(), m_target.path, m_target.manifestPath());
}

std::string TableWriter::describeError() const {
    const Output& output = m_output.output();
    return output.getError().empty() && m_manifest ? m_manifest->describeError() : output.describeError();
}

bool TableWriter::writeHead() {
    const std::string text = head(0);
    const bool isSame = m_pPrevious != nullptr && m_output.position() == 0 &&
                        m_pPrevious->summary().columns.value_or(std::vector<std::string>()) == m_columns;
    return isSame ? m_output.copy(0, text.size()) : m_output.write(text);
}

// Whether table and manifest are, to the byte, what is there.
bool TableWriter::isUnchanged() const {
    return m_output.isSame() && m_uiComputed == 0 && m_uiCopied == m_pPrevious->summary().doneCount &&
           m_target.inputs == m_pPrevious->summary().inputs;
}

std::string TableWriter::head(std::uint64_t rows) const {
    return isNpy() ? npyHead(rows, m_columns.size()) : csvHead(m_columns);
}

}  // namespace Zantrix::Cli
