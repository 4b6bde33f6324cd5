#pragma once

#include <murvane/core/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Zantrix::IFF {

/// A row of bytes that never changes and is shared by its copies; so a file is in memory once, however many chunks
/// and copies of chunks refer to it. The last holder frees the bytes.
class MURVANE_API SharedBytes {
public:
    /// No bytes.
    SharedBytes() = default;

    /// A part of a buffer, which stays in memory as long as any of its parts is in use.
    ///
    /// @param part  within `*owner`, at most 2^32 - 1 bytes
    SharedBytes(const std::shared_ptr<const std::string>& owner, std::string_view part);

    /// A copy of bytes. `bytes` may be null if `size` is 0.
    static SharedBytes copyOf(const char* bytes, std::uint32_t size);

    /// Null when there are no bytes.
    const char* data() const { return m_pBytes.get(); }
    std::uint32_t size() const { return m_uiSize; }
    bool empty() const { return m_uiSize == 0; }
    std::string_view view() const { return {m_pBytes.get(), m_uiSize}; }

private:
    std::shared_ptr<const char> m_pBytes;
    std::uint32_t m_uiSize = 0;
};

}  // namespace Zantrix::IFF
