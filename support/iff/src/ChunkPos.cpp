#include <murvane/iff/ChunkPos.h>

namespace Zantrix::IFF {

/// Before the first chunk.
void ChunkPos::start(ChunkList& topLevel) {
    m_vPath.assign(1, {&topLevel, topLevel.begin()});
    m_bOnChunk = false;
}

/// Moves to the next chunk in file order; false, and nowhere, if there is none.
bool ChunkPos::advance() {
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
void ChunkPos::leaveEndedLists() {
    while (!m_vPath.empty() && m_vPath.back().itChunk == m_vPath.back().pList->end()) {
        m_vPath.pop_back();
        if (!m_vPath.empty()) {
            ++m_vPath.back().itChunk;
        }
    }
}

}  // namespace Zantrix::IFF
