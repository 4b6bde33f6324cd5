#include <murvane/iff/SharedBytes.h>

#include <algorithm>

namespace Zantrix::IFF {

SharedBytes::SharedBytes(const std::shared_ptr<const std::string>& owner, std::string_view part)
    : m_uiSize(static_cast<std::uint32_t>(part.size())) {
    // Nothing is no reason to keep a whole file in memory.
    if (!part.empty()) {
        m_pBytes = std::shared_ptr<const char>(owner, part.data());
    }
}

SharedBytes SharedBytes::copyOf(const char* bytes, std::uint32_t size) {
    SharedBytes result;
    if (size > 0) {
        const auto copy = std::make_shared_for_overwrite<char[]>(size);
        std::copy_n(bytes, size, copy.get());
        result.m_pBytes = std::shared_ptr<const char>(copy, copy.get());
        result.m_uiSize = size;
    }
    return result;
}

}  // namespace Zantrix::IFF
