#pragma once

#include <murvane/iff/Chunk.h>

#include <vector>

namespace Zantrix::IFF {

/// A place in a parser's tree, as `IFFParser::find` reports it: a chunk, the list that holds it, and the way down to
/// it.
///
/// It owns nothing and refers into the tree of the parser that filled it. It stays good while that chunk and the
/// chunks around it stay in the tree; adding chunks anywhere and removing others does it no harm. It must not be used
/// any more
/// - after its chunk, or a chunk around it, was removed by other means than `IFFParser::remove` with this position;
/// nor,
///   after that, when the chunk that then followed has been removed,
/// - after `setData` on a chunk around it,
/// - after the parser has read again, was assigned to, or is gone.
/// A copied parser has a tree of its own: a position copied along with it still refers to the first parser's tree.
class MURVANE_API ChunkPos {
public:
    /// A place nowhere.
    ChunkPos() = default;

    /// Whether there is a chunk here: false before a find, after one that failed, and after the chunk was removed.
    bool isValid() const { return m_bOnChunk; }

    /// The chunk; null if not valid.
    Chunk* getChunk() const { return m_bOnChunk ? &*m_vPath.back().itChunk : nullptr; }

    /// The list that holds the chunk; null if not valid.
    ChunkList* getList() const { return m_bOnChunk ? m_vPath.back().pList : nullptr; }

    /// The chunk whose child list `getList()` is; null at the top level and if not valid.
    Chunk* getOwner() const {
        return m_bOnChunk && m_vPath.size() > 1 ? &*m_vPath[m_vPath.size() - 2].itChunk : nullptr;
    }

private:
    friend class IFFParser;

    struct Step {
        ChunkList* pList;
        ChunkList::iterator itChunk;
    };

    void start(ChunkList& topLevel);
    bool advance();
    void leaveEndedLists();

    std::vector<Step> m_vPath;  // from the top level down
    ChunkId m_id;               // what is being looked for
    bool m_bOnChunk = false;    // otherwise the last step is the place to go on from
};

}  // namespace Zantrix::IFF
