#include "features/ResumedOutput.h"

#include <algorithm>

namespace Zantrix::Cli {

bool ResumedOutput::write(std::string_view bytes) {
    return settle() && m_output.write(bytes.data(), bytes.size());
}

bool ResumedOutput::copy(std::uint64_t offset, std::uint64_t size) {
    if (offset == position() && m_uiSame == position()) {
        m_uiSame += size;
        return m_bLazy || m_pPrevious->copy(offset, size, m_output);
    }
    return settle() && m_pPrevious->copy(offset, size, m_output);
}

bool ResumedOutput::withdraw(std::uint64_t position) {
    if (!m_bLazy && !m_output.withdraw(position)) {
        return false;
    }
    m_uiSame = std::min(m_uiSame, position);
    return true;
}

bool ResumedOutput::isSame() const {
    return m_pPrevious != nullptr && m_uiSame == position() && m_uiSame == m_pPrevious->summary().byteCount;
}

bool ResumedOutput::settle() {
    if (!m_bLazy) {
        return true;
    }
    m_bLazy = false;
    return m_uiSame == 0 || m_pPrevious->copy(0, m_uiSame, m_output);
}

}  // namespace Zantrix::Cli
