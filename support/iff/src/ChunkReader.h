#pragma once

#include "RawChunk.h"

#include <murvane/iff/Chunk.h>
#include <murvane/iff/Finding.h>
#include <murvane/iff/ReadLimits.h>

#include <memory>
#include <string>
#include <vector>

namespace Zantrix::IFF {

/// Builds the tree of one file from its bytes. Used once.
class ChunkReader {
public:
    /// @param file  the whole file, its header of 12 bytes checked
    ChunkReader(std::shared_ptr<const std::string> file, const ReadLimits& limits);

    /// Fills the tree.
    ///
    /// @param riff      a "RIFF" chunk whose list is empty
    /// @param trailing  what follows the RIFF chunk
    /// @return false when the file is refused; `getError` tells why, and the tree has no meaning
    bool read(Chunk& riff, SharedBytes& trailing);

    /// Of the reading that was done; may be moved out.
    std::vector<Finding>& getFindings() { return m_vFindings; }
    const std::string& getError() const { return m_strError; }
    bool isExact() const { return m_bExact; }

private:
    bool readTopLevel(ByteCursor& bytes, std::uint64_t& end, ChunkList& list);
    bool takeTopLevelChunk(ByteCursor& bytes, std::uint64_t& end, RawChunk& chunk);
    static ByteCursor endWithin(const ByteCursor& bytes, std::uint64_t end, RawChunk& chunk);
    bool goesOnAfterEnd(const ByteCursor& bytes) const;
    bool readList(ByteCursor bytes, ChunkList& list, unsigned depth);
    bool readCueTable(const RawChunk& raw, ChunkList& list);
    bool add(const RawChunk& raw, ChunkList& list, unsigned depth);
    bool addBelow(const RawChunk& raw, Chunk& chunk, unsigned depth);

    bool countChunk(std::uint64_t offset);
    void takePadding(const RawChunk& raw, Chunk& chunk);
    void takeTail(std::string_view tail, std::uint64_t offset, ChunkList& list);
    void noteDefects(const RawChunk& raw);
    SharedBytes share(std::string_view part) const { return SharedBytes(m_pFile, part); }

    template <typename... Parts>
    void note(std::uint64_t offset, const Parts&... parts);
    template <typename... Parts>
    void noteInexact(std::uint64_t offset, const Parts&... parts);
    template <typename... Parts>
    bool fail(std::uint64_t offset, const char* what, const Parts&... parts);

    std::shared_ptr<const std::string> m_pFile;
    ReadLimits m_limits;
    std::size_t m_uiChunks = 0;
    std::vector<Finding> m_vFindings;
    std::string m_strError;
    bool m_bExact = true;
};

}  // namespace Zantrix::IFF
