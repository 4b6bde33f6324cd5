#pragma once

#include <murvane/iff/Chunk.h>

#include <vector>

namespace Zantrix::IFF {

/// A place in a parser's tree, as `IFFParser::find` reports it: a chunk, its list, and the way down to them.
///
/// It owns nothing and refers into the tree of the parser that filled it. It stays good while that chunk and the
/// chunks around it stay in the tree; adding chunks anywhere and removing others does it no harm. It must not be used
/// any more
/// - after its chunk, or a chunk around it, was removed by other means than `IFFParser::remove` with this position;
///   nor, after that, when the chunk that then followed has been removed,
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

// Inline: a search takes a step for each of what may be a hundred thousand chunks.

/// Before the first chunk.
inline void ChunkPos::start(ChunkList& topLevel) {
    m_vPath.assign(1, {&topLevel, topLevel.begin()});
    m_bOnChunk = false;
}

/// Moves to the next chunk in file order; false, and nowhere, if there is none.
inline bool ChunkPos::advance() {
    if (m_bOnChunk) {
        Step& step = m_vPath.back();
        if (ChunkList* below = step.itChunk->getList()) {
            m_vPath.push_back({below, below->begin()});
        } else {
            ++step.itChunk;
        }
    }
    leaveEndedLists();
    m_bOnChunk = !m_vPath.empty();
    return m_bOnChunk;
}

/// Steps out of every list that has ended, and past the chunk that holds it.
inline void ChunkPos::leaveEndedLists() {
    while (!m_vPath.empty() && m_vPath.back().itChunk == m_vPath.back().pList->end()) {
        m_vPath.pop_back();
        if (!m_vPath.empty()) {
            ++m_vPath.back().itChunk;
        }
    }
}

}  // namespace Zantrix::IFF
