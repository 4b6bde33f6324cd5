#include "features/CopiedRows.h"

#include <utility>

namespace Zantrix::Cli {

CopiedRows::CopiedRows(FeatureTable& table, const PreviousTable& previous, Diagnostics& diagnostics, TableInput input)
    : m_table(table), m_previous(previous), m_diagnostics(diagnostics), m_input(std::move(input)) {}

Outcome CopiedRows::deliver() {
    const PreviousTable::Rows rows = m_previous.find(m_input.name, m_table.position());
    if (rows.rowCount > 0) {
        if (const auto misfit = m_table.misfit(m_input)) {
            m_diagnostics.error(*misfit);
            return Outcome::InputFailed;
        }
    }
    m_input.firstTime = rows.firstTime;
    m_input.digest = rows.digest;
    const bool isCopied = m_table.beginInput(m_input) && m_table.copyRows(m_input, rows) && m_table.endInput(m_input);
    return isCopied ? Outcome::Done : Outcome::OutputFailed;
}

}  // namespace Zantrix::Cli
