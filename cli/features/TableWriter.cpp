#include "features/TableWriter.h"

#include "Command.h"
#include "features/TableHead.h"

#include <utility>

namespace Zantrix::Cli {

TableWriter::TableWriter(TableTarget target) : m_target(std::move(target)) {
    // What changes from now on is newer than the table.
    std::timespec_get(&m_started, TIME_UTC);
    if (m_target.hasManifest) {
        m_manifest.emplace(m_target.definition, m_target.inputs);
    }
}

bool TableWriter::open() {
    if (!m_output.open(m_target.path)) {
        return false;
    }
    if (m_manifest && !m_output.isFile()) {
        throw UsageError((isNpy() ? "--format npy" : "--shard or --resume") +
                         std::string(" needs a file to write, which ") + m_target.path + " is not");
    }
    return !m_manifest || m_manifest->open(m_target.manifestPath());
}

bool TableWriter::begin(const std::vector<std::string>& columns) {
    m_columns = columns;
    m_bBegun = true;
    const std::string text = head(0);
    return m_output.write(text.data(), text.size());
}

bool TableWriter::beginInput(const std::string& name, std::uint64_t rate) {
    m_uiInputStart = m_output.position();
    m_bWasBegun = m_bBegun;
    m_entry = {name, true, rate, m_uiRows};
    return true;
}

bool TableWriter::addRows(std::string_view bytes, std::size_t rows) {
    m_entry.rowCount += rows;
    m_entry.byteCount += bytes.size();
    return m_output.write(bytes.data(), bytes.size());
}

bool TableWriter::endInput(double firstTime) {
    m_entry.firstTime = firstTime;
    m_uiRows += m_entry.rowCount;
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
    const std::string text = head(m_uiRows);
    if (!m_bBegun && !m_output.write(text.data(), text.size())) {
        return false;
    }
    if (isNpy() && !m_output.overwrite(0, text.data(), text.size())) {
        return false;
    }
    if (!m_manifest) {
        return m_output.commit();
    }
    m_output.setTime(m_started);
    return (!m_bBegun || m_manifest->setColumns(m_columns)) && m_manifest->finish(m_uiRows, m_output.position()) &&
           commitTable(m_output, m_manifest->output(), m_target.path, m_target.manifestPath());
}

std::string TableWriter::describeError() const {
    return m_output.getError().empty() && m_manifest ? m_manifest->describeError() : m_output.describeError();
}

std::string TableWriter::head(std::uint64_t rows) const {
    return isNpy() ? npyHead(rows, m_columns.size()) : csvHead(m_columns);
}

}  // namespace Zantrix::Cli
