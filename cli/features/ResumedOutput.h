#pragma once

#include "features/PreviousTable.h"
#include "shell/Output.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Zantrix::Cli {

/// The bytes of a table, some of them taken from an earlier one. As long as they are the same from the start, nothing
/// is copied: it may turn out that nothing changed at all.
class ResumedOutput {
public:
    /// @param pPrevious  the earlier table, or null
    explicit ResumedOutput(const PreviousTable* pPrevious) : m_pPrevious(pPrevious) {}

    /// To open it, to end it, and for its errors.
    Output& output() { return m_output; }
    const Output& output() const { return m_output; }

    std::uint64_t position() const { return m_bLazy ? m_uiSame : m_output.position(); }

    bool write(std::string_view bytes);

    /// Takes bytes from the earlier table.
    bool copy(std::uint64_t offset, std::uint64_t size);

    /// As `Output::withdraw`.
    bool withdraw(std::uint64_t position);

    /// Whether all bytes are those of the earlier table.
    bool isSame() const;

    /// Has all bytes be in the output.
    bool settle();

private:
    const PreviousTable* m_pPrevious;
    Output m_output;
    bool m_bLazy = true;         // nothing has been written yet
    std::uint64_t m_uiSame = 0;  // so many bytes from the start are those of the earlier table
};

}  // namespace Zantrix::Cli
