#pragma once

#include <murvane/core/Export.h>

#include <array>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zantrix::IFF {

/// The four-character code of a chunk, or of what a list holds. Case matters: "LIST" and "list" are different codes.
class MURVANE_API ChunkId {
public:
    /// Four zero bytes.
    constexpr ChunkId() = default;

    // Implicit on purpose, so that calls read `find("fmt ", position)`.
    constexpr ChunkId(const char (&text)[5]) : m_code{text[0], text[1], text[2], text[3]} {}

    constexpr bool operator==(const ChunkId&) const = default;

    /// The four bytes as they stand in a file.
    constexpr const std::array<char, 4>& getBytes() const { return m_code; }
    constexpr std::array<char, 4>& getBytes() { return m_code; }
    constexpr std::string_view view() const { return {m_code.data(), m_code.size()}; }

    /// Whether all four are printable ASCII characters, as the codes of real chunks are.
    bool isPrintable() const;

    /// The code for people: bytes that are not printable appear as "\x1f".
    std::string toString() const;

private:
    std::array<char, 4> m_code{};
};

/// Prints `toString()`.
MURVANE_API std::ostream& operator<<(std::ostream& os, const ChunkId& id);

}  // namespace Zantrix::IFF
