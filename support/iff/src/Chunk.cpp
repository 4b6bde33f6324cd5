#include "ChunkKinds.h"

#include <murvane/iff/Chunk.h>

#include <iterator>
#include <utility>

namespace Zantrix::IFF {

Chunk::Chunk(ChunkId id) : m_id(id) {
    if (isListId(id) || id == c_riffId || id == c_cueId) {
        m_pList = std::make_unique<ChunkList>();
    }
}

Chunk::~Chunk() = default;
Chunk::Chunk(Chunk&& other) noexcept = default;

Chunk::Chunk(const Chunk& other)
    : m_bytes(other.m_bytes),
      m_id(other.m_id),
      m_pList(other.m_pList ? std::make_unique<ChunkList>(*other.m_pList) : nullptr),
      m_uiFileOffset(other.m_uiFileOffset),
      m_ePadding(other.m_ePadding),
      m_cPadding(other.m_cPadding) {}

Chunk& Chunk::operator=(const Chunk& other) {
    // Copied first: `other` may stand somewhere below this chunk.
    return *this = Chunk(other);
}

Chunk& Chunk::operator=(Chunk&& other) noexcept {
    // Taken out first, for the same reason.
    Chunk taken(std::move(other));
    m_bytes = std::move(taken.m_bytes);
    m_id = taken.m_id;
    m_pList.swap(taken.m_pList);
    m_uiFileOffset = taken.m_uiFileOffset;
    m_ePadding = taken.m_ePadding;
    m_cPadding = taken.m_cPadding;
    return *this;
}

void Chunk::setData(const char* bytes, unsigned size) {
    setData(SharedBytes::copyOf(bytes, size));
}

void Chunk::setData(SharedBytes bytes) {
    m_bytes = std::move(bytes);
    m_pList.reset();
    repairPadding();
}

void Chunk::repairPadding() {
    m_ePadding = Padding::Present;
    m_cPadding = 0;
}

Chunk& ChunkList::append(Chunk chunk) {
    if (!m_chunks.empty() && m_chunks.back().m_ePadding == Chunk::Padding::Missing) {
        m_chunks.back().repairPadding();
    }
    if (chunk.m_ePadding == Chunk::Padding::Missing) {
        chunk.repairPadding();
    }
    m_chunks.push_back(std::move(chunk));
    return m_chunks.back();
}

ChunkList::iterator ChunkList::erase(iterator place) {
    if (place != m_chunks.begin() && std::prev(place)->m_ePadding == Chunk::Padding::Missing) {
        std::prev(place)->repairPadding();
    }
    return m_chunks.erase(place);
}

}  // namespace Zantrix::IFF
