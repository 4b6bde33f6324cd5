#pragma once

#include <murvane/iff/ChunkPos.h>
#include <murvane/iff/Finding.h>
#include <murvane/iff/ReadLimits.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace Zantrix::IFF {

/// A whole WAV file as a tree of chunks: read, searched, changed and written again.
///
/// 1. `read` takes the file from a stream; `isValid` tells whether there is one now.
/// 2. `find` and `findNext` lead to chunks, wherever they stand; `getChunks` gives the tree itself.
/// 3. Chunks are changed where they stand (`Chunk::setData`), removed (`remove`), or added (`ChunkList::append`).
/// 4. `write` puts the file on a stream, with sizes that fit.
///
/// Only what the tree needs is interpreted: the file's header, chunk headers, lists, and the table of a "cue "
/// chunk. Everything else is kept and written as it was, byte for byte and in its order: content, padding bytes,
/// also those that are not zero or missing, filler at the end of lists, and bytes after the RIFF chunk. A list other
/// than "adtl" that does not divide into chunks is kept as plain bytes.
///
/// A parser is a value: a copy has its own tree and shares the bytes. Moving one copies it, so that there is never a
/// parser without a tree. It is used by one thread at a time.
class MURVANE_API IFFParser {
public:
    /// A parser that holds no file.
    explicit IFFParser(const ReadLimits& limits = ReadLimits());

    IFFParser(const IFFParser& other) = default;
    IFFParser& operator=(const IFFParser& other) = default;

    /// Reads the stream to its end, in place of what the parser held before; positions into that end.
    ///
    /// Sets the stream's fail bit, and holds no file afterwards, if the stream is in a failed state, is not RIFF/WAVE
    /// with a complete header of 12 bytes, has 64-bit sizes (RF64, BW64, ds64) or big-endian ones (RIFX), or goes
    /// beyond a limit; `getError` then says which. Otherwise the stream is left at its end, with the end-of-file bit.
    ///
    /// Files with less serious defects are read, with a note in `getFindings`:
    /// - a chunk that reaches past the list around it, or past the end of the file, is cut off there (one that the
    ///   file has no room for ends with the RIFF chunk, if bytes follow that, unless it is the audio);
    /// - a missing padding byte is recognised by the chunks that follow;
    /// - a RIFF chunk that ends inside a chunk that the file has room for, or says less than 4 bytes, or is followed by
    ///   nothing but whole chunks up to the end of the file, is taken to include them;
    /// - a "cue " chunk with room for fewer records than it says has as many as are there.
    ///
    /// Takes time and memory in proportion to the file: the bytes once, and 64 to 80 bytes for each chunk.
    std::istream& read(std::istream& is);

    /// Writes the tree, and after it the bytes that followed the RIFF chunk. Sizes and the count of cue records are
    /// recomputed; content of an odd size is padded with a zero byte unless it was read with another one. Missing
    /// padding bytes stay missing as long as nothing is changed: a change supplies them all, and turns one that is not
    /// zero into a zero where what follows no longer tells that it is padding. A tree that was read and not changed
    /// gives the same bytes again if `isExact`; if not, it differs from the file exactly in this: the sizes of chunks
    /// that were cut off, the size of the RIFF chunk, the count of cue records, and the padding after chunks that were
    /// cut off and after a last chunk in a RIFF chunk that promised more.
    ///
    /// Sets the fail bit without writing anything if there is no file, if a size would exceed 32 bits, or if a "cue "
    /// chunk holds anything but records of 24 bytes called "cuep"; `getError` says which. Whether the stream took all
    /// bytes is told by the stream.
    std::ostream& write(std::ostream& os);

    /// Whether the last `read` found a file.
    bool isValid() const { return m_bValid; }

    /// Finds the first chunk with this identifier anywhere in the tree: in file order, a list before what is in it.
    ///
    /// @param position  is set to the chunk; not valid if there is none
    bool find(ChunkId id, ChunkPos& position);

    /// Moves a position that `find` has set to the next chunk with the same identifier; after `remove`, to the next
    /// one after the chunk removed. One pass over all of them takes time in proportion to the tree.
    ///
    /// @return false if there is none; the position is then not valid
    bool findNext(ChunkPos& position);

    /// Finds the chunk whose child list is `list`.
    ///
    /// @return false if there is none, as for the top level; the position is then not valid
    bool findOwner(const ChunkList& list, ChunkPos& position);

    /// Removes the chunk at a valid position, with all below it. The position is not valid afterwards, but `findNext`
    /// goes on from there.
    void remove(ChunkPos& position);

    /// The chunks below the RIFF chunk. The list keeps its address until the parser reads, is assigned to, or is gone.
    ChunkList& getChunks() { return *m_riff.getList(); }
    const ChunkList& getChunks() const { return *m_riff.getList(); }

    /// Bytes that came after the RIFF chunk.
    const SharedBytes& getTrailingBytes() const { return m_trailing; }

    /// Why the last `read` or `write` was refused: where in the file, what was being read, and what was wrong with
    /// it. Empty after success.
    const std::string& getError() const { return m_strError; }

    /// The defects of the file that was read, in the order of their discovery; the first 1000 of them.
    const std::vector<Finding>& getFindings() const { return m_vFindings; }

    /// Whether writing the tree, unchanged, gives the bytes of the file that was read.
    bool isExact() const { return m_bExact; }

private:
    void clear();
    bool parse(std::istream& source);

    ReadLimits m_limits;
    Chunk m_riff;
    SharedBytes m_trailing;
    std::vector<Finding> m_vFindings;
    std::string m_strError;
    bool m_bValid = false;
    bool m_bExact = false;
};

}  // namespace Zantrix::IFF
