#include "ChunkKinds.h"

#include <murvane/iff/Chunk.h>

#include <iterator>
#include <utility>

namespace Zantrix::IFF {

namespace {

std::unique_ptr<ChunkList> listOfKind(ChunkId id) {
    return isListId(id) || id == c_riffId || id == c_cueId ? std::make_unique<ChunkList>() : nullptr;
}

}  // namespace

Chunk::Chunk(ChunkId id) : m_id(id), m_pList(listOfKind(id)) {}

Chunk::~Chunk() = default;
Chunk::Chunk(Chunk&& other) noexcept = default;

Chunk::Chunk(const Chunk& other)
    : m_bytes(other.m_bytes),
      m_id(other.m_id),
      m_pList(other.m_pList ? std::make_unique<ChunkList>(*other.m_pList) : nullptr),
      m_uiFileOffset(other.m_uiFileOffset),
      m_ePadding(other.m_ePadding),
      m_cPadding(other.m_cPadding),
      m_bChanged(other.m_bChanged) {}

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
    m_bChanged = true;
    return *this;
}

void Chunk::setData(const char* bytes, unsigned size) {
    setData(SharedBytes::copyOf(bytes, size));
}

void Chunk::setData(SharedBytes bytes) {
    m_bytes = std::move(bytes);
    m_pList.reset();
    m_bChanged = true;
    repairPadding();
}

// Takes another identity and no content, as a new chunk.
void Chunk::become(ChunkId id) {
    m_bytes = SharedBytes();
    m_id = id;
    m_pList = listOfKind(id);
    m_uiFileOffset = 0;
    m_bChanged = true;
    repairPadding();
}

void Chunk::repairPadding() {
    m_ePadding = Padding::Present;
    m_cPadding = 0;
}

ChunkList::ChunkList(const ChunkList& other)
    : m_bChanged(other.m_bChanged), m_type(other.m_type), m_tail(other.m_tail) {
    m_chunks.assign(other.begin(), other.end());
}

ChunkList& ChunkList::operator=(const ChunkList& other) {
    // Copied first: `other` may stand somewhere below this list.
    ChunkList copy(other);
    m_type = copy.m_type;
    m_tail = copy.m_tail;
    m_bChanged = true;
    while (!empty()) {
        erase(begin());
    }
    for (Chunk& chunk : copy) {
        add(chunk.m_id) = std::move(chunk);
    }
    return *this;
}

// A new chunk at the end, next to whatever is there.
Chunk& ChunkList::add(ChunkId id) {
    if (m_removed.empty()) {
        return m_chunks.emplace_back(id);
    }
    m_removed.front().become(id);
    m_chunks.splice(m_chunks.end(), m_removed, m_removed.begin());
    return m_chunks.back();
}

Chunk& ChunkList::append(Chunk chunk) {
    m_bChanged = true;
    Chunk& added = add(chunk.m_id);
    added = std::move(chunk);
    return added;
}

Chunk& ChunkList::append(ChunkId id, SharedBytes bytes) {
    m_bChanged = true;
    Chunk& added = add(id);
    added.setData(std::move(bytes));
    return added;
}

ChunkList::iterator ChunkList::erase(iterator place) {
    m_bChanged = true;
    const iterator next = std::next(place);
    place->become(ChunkId());
    m_removed.splice(m_removed.begin(), m_chunks, place);
    return next;
}

}  // namespace Zantrix::IFF
