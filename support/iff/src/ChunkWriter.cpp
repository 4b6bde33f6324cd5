#include "ChunkWriter.h"

#include "ChunkKinds.h"
#include "RawChunk.h"

#include <murvane/core/Logging.h>
#include <murvane/iff/ByteCursor.h>

#include <algorithm>
#include <limits>
#include <ostream>

namespace Zantrix::IFF {

namespace {

constexpr std::size_t c_uiPendingSize = std::size_t{1} << 14;

}  // namespace

bool ChunkWriter::measure(const Chunk& riff) {
    m_bPadsAll = hasChanged(riff);
    std::uint64_t size = 0;
    return measureContent(riff, size);
}

// Whether anything below differs from what was read. The chunk itself is that of the file.
bool ChunkWriter::hasChanged(const Chunk& chunk) {
    const ChunkList* pList = chunk.getList();
    return pList != nullptr && (pList->m_bChanged || std::any_of(pList->begin(), pList->end(), [](const Chunk& child) {
                                    return child.m_bChanged || hasChanged(child);
                                }));
}

// Padding that is missing throughout can be recognised; where some is there and some is missing, it is a matter of
// luck what a reader makes of it. So an old chunk may lack it only in a file without any new one.
bool ChunkWriter::isPadded(const Chunk& chunk, std::uint64_t size) const {
    return size % 2 != 0 && (m_bPadsAll || chunk.m_ePadding == Chunk::Padding::Present);
}

bool ChunkWriter::measureContent(const Chunk& chunk, std::uint64_t& size) {
    if (chunk.getList() == nullptr) {
        size = chunk.getSize();
        return true;
    }
    const std::size_t place = m_vListSizes.size();
    m_vListSizes.push_back(0);
    if (!measureList(chunk, size)) {
        return false;
    }
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        m_strError = concatenate("writing chunk \"", chunk.getId(), "\": its ", size, " bytes exceed 32 bits");
        return false;
    }
    m_vListSizes[place] = static_cast<std::uint32_t>(size);
    return true;
}

bool ChunkWriter::measureList(const Chunk& owner, std::uint64_t& size) {
    const ChunkList& list = *owner.getList();
    size = sizeof(std::uint32_t) + std::uint64_t{list.getTail().size()};  // type or count
    for (const Chunk& chunk : list) {
        if (owner.getId() == c_cueId) {
            if (chunk.getId() != c_cueRecordId || chunk.getList() != nullptr || chunk.getSize() != c_uiCueRecordSize) {
                m_strError =
                    concatenate("writing chunk \"", c_cueId, "\": \"", chunk.getId(), "\" of ", chunk.getSize(),
                                " bytes in it is not a cue point of ", c_uiCueRecordSize, " bytes");
                return false;
            }
            size += c_uiCueRecordSize;
            continue;
        }
        std::uint64_t content = 0;
        if (!measureContent(chunk, content)) {
            return false;
        }
        size += c_uiHeaderSize + content + (isPadded(chunk, content) ? 1 : 0);
    }
    return true;
}

void ChunkWriter::write(const Chunk& riff, const SharedBytes& trailing, std::ostream& os) {
    m_pStream = &os;
    m_vPending.reserve(c_uiPendingSize);
    writeChunk(riff, riff.m_cPadding);
    put(trailing.view());
    flush();
}

// The padding byte behind a chunk: the one that was read. If that is not zero, what follows tells readers that it is
// padding; where a change has made that doubtful, it becomes zero.
char ChunkWriter::paddingOf(const ChunkList& list, ChunkList::const_iterator itChunk) const {
    const char padding = itChunk->m_cPadding;
    if (padding == 0 || !m_bPadsAll) {
        return padding;
    }
    for (unsigned count = 0; count < c_uiLookAhead; ++count) {
        ++itChunk;
        if (itChunk == list.end()) {
            return list.getTail().empty() ? padding : '\0';
        }
        if (!itChunk->getId().isPrintable()) {
            return '\0';
        }
    }
    return padding;
}

void ChunkWriter::writeChunk(const Chunk& chunk, char padding) {
    const bool isList = chunk.getList() != nullptr;
    const std::uint32_t size = isList ? m_vListSizes[m_uiNextList++] : chunk.getSize();
    put(chunk.getId().view());
    putLittleEndian(size);
    if (isList) {
        writeList(chunk);
    } else {
        put(chunk.m_bytes.view());
    }
    if (isPadded(chunk, size)) {
        put({&padding, 1});
    }
}

void ChunkWriter::writeList(const Chunk& owner) {
    const ChunkList& list = *owner.getList();
    const bool isCueTable = owner.getId() == c_cueId;
    if (isCueTable) {
        putLittleEndian(static_cast<std::uint32_t>(list.size()));
    } else {
        put(list.getType().view());
    }
    for (auto itChunk = list.begin(); itChunk != list.end(); ++itChunk) {
        if (isCueTable) {
            put(itChunk->m_bytes.view());
        } else {
            writeChunk(*itChunk, paddingOf(list, itChunk));
        }
    }
    put(list.getTail().view());
}

void ChunkWriter::putLittleEndian(std::uint32_t value) {
    makeRoom(sizeof value);
    appendLittleEndian(m_vPending, value);
}

void ChunkWriter::put(std::string_view bytes) {
    makeRoom(bytes.size());
    if (bytes.size() > c_uiPendingSize) {
        m_pStream->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    } else {
        m_vPending.insert(m_vPending.end(), bytes.begin(), bytes.end());
    }
}

void ChunkWriter::makeRoom(std::size_t size) {
    if (m_vPending.size() + size > c_uiPendingSize) {
        flush();
    }
}

void ChunkWriter::flush() {
    m_pStream->write(m_vPending.data(), static_cast<std::streamsize>(m_vPending.size()));
    m_vPending.clear();
}

}  // namespace Zantrix::IFF
