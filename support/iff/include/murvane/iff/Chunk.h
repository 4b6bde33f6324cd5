#pragma once

#include <murvane/iff/ChunkId.h>
#include <murvane/iff/SharedBytes.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <memory_resource>

/// A RIFF file as a tree of values:
///
///     Chunk     an identifier with either plain bytes or a ChunkList below it
///     ChunkList the chunks below a "LIST", below the file itself, or the records of a "cue " chunk
///
/// Copying either copies everything below it; bytes are shared between copies, since they never change in place.
namespace Zantrix::IFF {

class ChunkList;

class MURVANE_API Chunk {
public:
    /// A new chunk without content. "LIST", "list" and "RIFF" get an empty child list, whose type is to be set
    /// with `ChunkList::setType`; "cue " gets an empty list of records, each a chunk "cuep" of 24 bytes.
    explicit Chunk(ChunkId id);
    ~Chunk();
    Chunk(const Chunk& other);
    Chunk& operator=(const Chunk& other);
    /// A chunk that was moved from may only be assigned to or destroyed.
    Chunk(Chunk&& other) noexcept;
    Chunk& operator=(Chunk&& other) noexcept;

    ChunkId getId() const { return m_id; }

    /// The content of a chunk without a child list, header and padding not included; null and 0 if it is empty or
    /// if there is a child list. Valid until the content is replaced or the last copy of the chunk is gone.
    const char* getData() const { return m_bytes.data(); }
    std::uint32_t getSize() const { return m_bytes.size(); }

    /// Replaces the content by a copy of `bytes`, which may be the chunk's own. The sizes of all that encloses the
    /// chunk follow when the tree is written. A child list is dropped: the chunk has plain bytes from then on.
    ///
    /// @param bytes  may be null if `size` is 0
    void setData(const char* bytes, unsigned size);

    /// The same without a copy.
    void setData(SharedBytes bytes);

    /// The chunks below this one; null if it has plain bytes. The list belongs to the chunk, keeps its address while
    /// the chunk lives and is not assigned to, and goes with it.
    ChunkList* getList() { return m_pList.get(); }
    const ChunkList* getList() const { return m_pList.get(); }

    /// Where the chunk's header stood in the file that was read; 0 for a chunk made by the program.
    std::uint32_t getFileOffset() const { return m_uiFileOffset; }

private:
    friend class ChunkList;
    friend class ChunkReader;
    friend class ChunkWriter;

    /// What follows content of an odd size: the byte m_cPadding, or nothing in files whose writer forgot it.
    enum class Padding : std::uint8_t { Present, Missing };

    void become(ChunkId id);
    void repairPadding();

    // A file may hold millions of chunks. This attribute lets m_id share the last eight bytes of m_bytes with its size.
    [[no_unique_address]] SharedBytes m_bytes;
    ChunkId m_id;
    std::unique_ptr<ChunkList> m_pList;
    std::uint32_t m_uiFileOffset = 0;
    Padding m_ePadding = Padding::Present;
    char m_cPadding = 0;
    bool m_bChanged = true;  // not as it was read
};

/// Chunks in file order. Adding, removing and finding the end take constant time; pointers and iterators to a chunk
/// stay valid until that chunk itself is removed.
class MURVANE_API ChunkList {
public:
    using iterator = std::pmr::list<Chunk>::iterator;
    using const_iterator = std::pmr::list<Chunk>::const_iterator;

    ChunkList() = default;
    ChunkList(const ChunkList& other);
    ChunkList& operator=(const ChunkList& other);

    /// The list type, such as "adtl" or "INFO", "WAVE" for the file itself; four zero bytes until it is set. The
    /// records of a "cue " chunk have none.
    ChunkId getType() const { return m_type; }
    void setType(ChunkId type) { m_type = type; }

    iterator begin() { return m_chunks.begin(); }
    iterator end() { return m_chunks.end(); }
    const_iterator begin() const { return m_chunks.begin(); }
    const_iterator end() const { return m_chunks.end(); }
    std::size_t size() const { return m_chunks.size(); }
    bool empty() const { return m_chunks.empty(); }

    /// Adds a chunk after the last one and returns it where it now is.
    Chunk& append(Chunk chunk);

    /// The same for a new chunk with this content.
    Chunk& append(ChunkId id, SharedBytes bytes);

    /// Removes a chunk with all below it.
    ///
    /// @return the place of the next chunk, or `end()`
    iterator erase(iterator place);

    /// Bytes after the last chunk that are no chunk themselves, such as filler. They stay at the end of the list.
    const SharedBytes& getTail() const { return m_tail; }

private:
    friend class ChunkReader;
    friend class ChunkWriter;

    Chunk& add(ChunkId id);

    // A list of a hundred thousand chunks is common, and to ask for the memory of each takes longer than to read it.
    // The first block has room for one: as many lists of a single chunk are possible, too.
    std::pmr::monotonic_buffer_resource m_memory{sizeof(Chunk) + 2 * sizeof(void*)};
    std::pmr::list<Chunk> m_chunks{&m_memory};
    std::pmr::list<Chunk> m_removed{&m_memory};  // empty chunks, whose memory new ones use again
    bool m_bChanged = true;                      // its chunks are not those that were read
    ChunkId m_type;
    SharedBytes m_tail;
};

}  // namespace Zantrix::IFF
