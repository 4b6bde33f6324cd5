#pragma once

#include <murvane/iff/Chunk.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::IFF {

/// Puts a tree on a stream. Used once: first `measure`, then `write`.
class ChunkWriter {
public:
    /// Computes the size of every list of the tree, once.
    ///
    /// @return false if the tree cannot be written; `getError` tells why
    bool measure(const Chunk& riff);

    /// Writes the tree that was measured, with its padding byte, and what follows it.
    void write(const Chunk& riff, const SharedBytes& trailing, std::ostream& os);

    const std::string& getError() const { return m_strError; }

private:
    static bool hasChanged(const Chunk& chunk);
    bool isPadded(const Chunk& chunk, std::uint64_t size) const;
    bool measureContent(const Chunk& chunk, std::uint64_t& size);
    bool measureList(const Chunk& owner, std::uint64_t& size);
    char paddingOf(const ChunkList& list, ChunkList::const_iterator itChunk) const;
    void writeChunk(const Chunk& chunk, char padding);
    void writeList(const Chunk& owner);
    void putLittleEndian(std::uint32_t value);
    void put(std::string_view bytes);
    void makeRoom(std::size_t size);
    void flush();

    // In the order in which the lists are met, so that writing meets them in the same order.
    std::vector<std::uint32_t> m_vListSizes;
    std::size_t m_uiNextList = 0;
    bool m_bPadsAll = false;  // as the tree has changed
    // What the stream is still to get: it takes its time over each call, and most chunks are small.
    std::vector<char> m_vPending;
    std::ostream* m_pStream = nullptr;
    std::string m_strError;
};

}  // namespace Zantrix::IFF
