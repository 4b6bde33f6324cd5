#pragma once

#include <murvane/iff/ChunkId.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Zantrix::IFF {

/// A place in a row of bytes that someone else owns, and the only way this library looks at bytes of a file.
///
/// Every request is answered with what was asked for or with false; after a refusal the cursor has not moved and
/// the output is untouched. Bounds are checked by comparing with what is left, so that no size can overflow. A cursor
/// made by `narrow` sees its own bytes only: a chunk's content cannot read into what follows the chunk.
class ByteCursor {
public:
    /// @param bytes   must outlive the cursor
    /// @param offset  where `bytes` begins in the file, for messages
    explicit ByteCursor(std::string_view bytes, std::uint64_t offset = 0) : m_bytes(bytes), m_uiOffset(offset) {}

    std::size_t remaining() const { return m_bytes.size(); }
    bool isAtEnd() const { return m_bytes.empty(); }

    /// Where the next byte stands in the file.
    std::uint64_t getOffset() const { return m_uiOffset; }

    /// All bytes left, without moving.
    std::string_view getRest() const { return m_bytes; }

    /// An unsigned integer, least significant byte first.
    template <std::unsigned_integral T>
    bool read(T& value) {
        std::string_view bytes;
        if (!read(sizeof(T), bytes)) {
            return false;
        }
        T result = 0;
        for (std::size_t i = sizeof(T); i-- > 0;) {
            result = static_cast<T>((static_cast<std::uint64_t>(result) << 8) | static_cast<unsigned char>(bytes[i]));
        }
        value = result;
        return true;
    }

    bool read(ChunkId& id) {
        std::string_view bytes;
        if (!read(id.getBytes().size(), bytes)) {
            return false;
        }
        bytes.copy(id.getBytes().data(), bytes.size());
        return true;
    }

    /// The next `size` bytes, as a view of them.
    bool read(std::size_t size, std::string_view& bytes) {
        if (size > m_bytes.size()) {
            return false;
        }
        bytes = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        m_uiOffset += size;
        return true;
    }

    /// Hands the next `size` bytes to a cursor of their own and steps over them.
    bool narrow(std::size_t size, ByteCursor& child) {
        const std::uint64_t offset = m_uiOffset;
        std::string_view bytes;
        if (!read(size, bytes)) {
            return false;
        }
        child = ByteCursor(bytes, offset);
        return true;
    }

    bool skip(std::size_t size) {
        std::string_view bytes;
        return read(size, bytes);
    }

private:
    std::string_view m_bytes;
    std::uint64_t m_uiOffset;
};

/// Appends an integer, least significant byte first.
template <std::unsigned_integral T>
void appendLittleEndian(std::vector<char>& bytes, T value) {
    std::array<char, sizeof(T)> encoded;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        encoded[i] = static_cast<char>(static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8 * i)));
    }
    bytes.insert(bytes.end(), encoded.begin(), encoded.end());
}

inline void appendId(std::vector<char>& bytes, ChunkId id) {
    bytes.insert(bytes.end(), id.getBytes().begin(), id.getBytes().end());
}

}  // namespace Zantrix::IFF
