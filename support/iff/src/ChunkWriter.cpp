#include "ChunkWriter.h"

#include "ChunkKinds.h"

#include <murvane/core/Logging.h>
#include <murvane/iff/ByteCursor.h>

#include <limits>
#include <ostream>

namespace Zantrix::IFF {

namespace {

void writeBytes(const SharedBytes& bytes, std::ostream& os) {
    os.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void writeBytes(const std::vector<char>& bytes, std::ostream& os) {
    os.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

bool ChunkWriter::measure(const Chunk& riff) {
    std::uint64_t size = 0;
    return measureContent(riff, size);
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
        const bool padded = content % 2 != 0 && chunk.m_ePadding == Chunk::Padding::Present;
        size += c_uiHeaderSize + content + (padded ? 1 : 0);
    }
    return true;
}

void ChunkWriter::write(const Chunk& chunk, std::ostream& os) {
    const bool isList = chunk.getList() != nullptr;
    const std::uint32_t size = isList ? m_vListSizes[m_uiNextList++] : chunk.getSize();
    std::vector<char> header;
    header.reserve(c_uiHeaderSize);
    appendId(header, chunk.getId());
    appendLittleEndian(header, size);
    writeBytes(header, os);
    if (isList) {
        writeList(chunk, os);
    } else {
        writeBytes(chunk.m_bytes, os);
    }
    if (size % 2 != 0 && chunk.m_ePadding == Chunk::Padding::Present) {
        os.put(chunk.m_cPadding);
    }
}

void ChunkWriter::writeList(const Chunk& owner, std::ostream& os) {
    const ChunkList& list = *owner.getList();
    const bool isCueTable = owner.getId() == c_cueId;
    std::vector<char> head;
    if (isCueTable) {
        appendLittleEndian(head, static_cast<std::uint32_t>(list.size()));
    } else {
        appendId(head, list.getType());
    }
    writeBytes(head, os);
    for (const Chunk& chunk : list) {
        if (isCueTable) {
            writeBytes(chunk.m_bytes, os);
        } else {
            write(chunk, os);
        }
    }
    writeBytes(list.getTail(), os);
}

}  // namespace Zantrix::IFF
