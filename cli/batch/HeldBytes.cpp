#include "batch/HeldBytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Zantrix::Cli {

std::unique_ptr<ByteStore::Chunk> ByteStore::take(bool needed) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_uiUsed >= m_uiLimit && !needed) {
            return nullptr;
        }
        ++m_uiUsed;
        if (!m_free.empty()) {
            std::unique_ptr<Chunk> pChunk = std::move(m_free.back());
            m_free.pop_back();
            return pChunk;
        }
    }
    return std::unique_ptr<Chunk>(new Chunk);
}

void ByteStore::giveBack(std::unique_ptr<Chunk> pChunk) {
    const std::lock_guard lock(m_mutex);
    --m_uiUsed;
    m_free.push_back(std::move(pChunk));
}

bool HeldBytes::append(std::string_view bytes, bool needed) {
    const std::size_t size = m_uiSize + bytes.size();
    const std::size_t chunks = m_chunks.size();
    while (m_chunks.size() * ByteStore::c_uiChunkSize < size) {
        std::unique_ptr<ByteStore::Chunk> pChunk = m_store.take(needed);
        if (!pChunk) {
            for (; m_chunks.size() > chunks; m_chunks.pop_back()) {
                m_store.giveBack(std::move(m_chunks.back()));
            }
            return false;
        }
        m_chunks.push_back(std::move(pChunk));
    }
    while (!bytes.empty()) {
        ByteStore::Chunk& chunk = *m_chunks[m_uiSize / ByteStore::c_uiChunkSize];
        const std::size_t offset = m_uiSize % ByteStore::c_uiChunkSize;
        const std::size_t count = std::min(bytes.size(), chunk.size() - offset);
        std::memcpy(chunk.data() + offset, bytes.data(), count);
        m_uiSize += count;
        bytes.remove_prefix(count);
    }
    return true;
}

void HeldBytes::clear() {
    for (; !m_chunks.empty(); m_chunks.pop_back()) {
        m_store.giveBack(std::move(m_chunks.back()));
    }
    m_uiSize = 0;
}

}  // namespace Zantrix::Cli
