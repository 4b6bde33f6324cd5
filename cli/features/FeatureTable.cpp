#include "features/FeatureTable.h"

namespace Zantrix::Cli {

std::optional<std::string> FeatureTable::misfit(const TableInput& input) const {
    if (!m_writer.hasBegun() || input.pColumns->isAlike(*m_pColumns)) {
        return std::nullopt;
    }
    return "does not fit into the table: " + input.pColumns->difference(*m_pColumns) + " at " +
           std::to_string(input.rate) + " Hz, but " + m_pColumns->difference(*input.pColumns) +
           " for the inputs before";
}

bool FeatureTable::beginInput(const TableInput& input) {
    m_pColumnsBefore = m_pColumns;
    return m_writer.beginInput(input.name, input.rate);
}

bool FeatureTable::addRows(const TableInput& input, std::string_view bytes, std::size_t rows) {
    return (m_writer.hasBegun() || begin(input.pColumns)) && m_writer.addRows(bytes, rows);
}

bool FeatureTable::copyRows(const TableInput& input, const PreviousTable::Rows& rows) {
    return (m_writer.hasBegun() || rows.rowCount == 0 || begin(input.pColumns)) && m_writer.copyRows(rows);
}

bool FeatureTable::endInput(const TableInput& input) {
    m_bAnyDone = true;
    if (input.drifts && !m_drifting) {
        m_drifting = input;
    }
    if (!m_pColumns) {
        m_pColumns = input.pColumns;
    }
    return m_writer.endInput(input.firstTime, input.digest);
}

bool FeatureTable::dropInput() {
    if (!m_writer.dropInput()) {
        return false;
    }
    // The head of the table is gone as well, if this input brought it.
    m_pColumns = m_pColumnsBefore;
    return true;
}

std::vector<std::string> FeatureTable::oddities() const {
    std::vector<std::string> messages;
    for (const Column& column : m_pColumns ? m_pColumns->empty() : std::vector<Column>()) {
        messages.push_back(describe(column) + " gives no values: the table has no column of it");
    }
    if (m_drifting) {
        messages.push_back("at " + std::to_string(m_drifting->rate) + " Hz, as of " + m_drifting->name +
                           ", windows are cut to whole samples, but times count in milliseconds: they drift");
    }
    return messages;
}

bool FeatureTable::finish() {
    if (!m_bAnyDone && !m_writer.wantsEmpty()) {
        m_writer.abandon();
        return true;
    }
    return (m_writer.hasBegun() || !m_bAnyDone || begin(m_pColumns)) && m_writer.finish();
}

bool FeatureTable::begin(const std::shared_ptr<const FeatureColumns>& pColumns) {
    m_pColumns = pColumns;
    return m_writer.begin(m_pColumns->names());
}

}  // namespace Zantrix::Cli
