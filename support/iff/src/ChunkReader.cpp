#include "ChunkReader.h"

#include "ChunkKinds.h"
#include "ErrorText.h"

#include <algorithm>
#include <utility>

namespace Zantrix::IFF {

namespace {

// Enough for people; a hostile file could have one for every eight of its bytes.
constexpr std::size_t c_uiMaxFindings = 1000;

}  // namespace

ChunkReader::ChunkReader(std::shared_ptr<const std::string> file, const ReadLimits& limits)
    : m_pFile(std::move(file)), m_limits(limits) {}

template <typename... Parts>
void ChunkReader::note(std::uint64_t offset, const Parts&... parts) {
    if (m_vFindings.size() < c_uiMaxFindings) {
        m_vFindings.push_back({offset, concatenate(parts...)});
    }
}

// Notes a defect that writing removes.
template <typename... Parts>
void ChunkReader::noteInexact(std::uint64_t offset, const Parts&... parts) {
    m_bExact = false;
    note(offset, parts...);
}

template <typename... Parts>
bool ChunkReader::fail(std::uint64_t offset, const char* what, const Parts&... parts) {
    m_strError = errorText(offset, what, parts...);
    return false;
}

bool ChunkReader::read(Chunk& riff, SharedBytes& trailing) {
    const std::string_view file = *m_pFile;
    ByteCursor bytes(file.substr(c_uiRiffHeaderSize), c_uiRiffHeaderSize);
    ByteCursor header(file.substr(4, 4));
    std::uint32_t size = 0;
    header.read(size);

    std::uint64_t end = c_uiHeaderSize + std::uint64_t{size};
    if (end < c_uiRiffHeaderSize || end > file.size()) {
        noteInexact(4, "the RIFF chunk says ", size, " bytes, ", file.size() - c_uiHeaderSize, " are there");
        end = file.size();
    }
    ChunkList& list = *riff.getList();
    list.setType(c_waveType);
    list.m_bChanged = false;
    if (!readTopLevel(bytes, end, list)) {
        return false;
    }

    if (size > file.size() - c_uiHeaderSize && !list.empty()) {
        // The RIFF chunk promised more than there is: its last chunk's padding byte was cut off, not forgotten.
        list.m_chunks.back().repairPadding();
    }
    if ((end - c_uiHeaderSize) % 2 != 0) {
        // Only a zero can be taken for padding here: anything else is kept as what follows the RIFF chunk.
        if (!bytes.isAtEnd() && bytes.getRest()[0] == 0) {
            bytes.skip(1);
        } else {
            riff.m_ePadding = Chunk::Padding::Missing;
        }
    }
    if (!bytes.isAtEnd()) {
        note(bytes.getOffset(), bytes.remaining(), " bytes follow the RIFF chunk");
    }
    trailing = share(bytes.getRest());
    return true;
}

bool ChunkReader::readTopLevel(ByteCursor& bytes, std::uint64_t& end, ChunkList& list) {
    RawChunk raw;
    while (takeTopLevelChunk(bytes, end, raw)) {
        if (!add(raw, list, 1)) {
            return false;
        }
    }
    std::string_view tail;
    const std::uint64_t offset = bytes.getOffset();
    bytes.read(static_cast<std::size_t>(end - offset), tail);
    takeTail(tail, offset, list);
    return true;
}

// The next chunk of the file itself. RIFF sizes lie more often than those of chunks: recorders that stop before they
// have patched them, tools that append without doing so. So what the chunks say goes, as long as it fits the file.
//
// @param end  where the RIFF chunk ends; corrected when the chunks show that it ends elsewhere
bool ChunkReader::takeTopLevelChunk(ByteCursor& bytes, std::uint64_t& end, RawChunk& chunk) {
    const std::uint64_t fileEnd = m_pFile->size();
    const auto moveEnd = [&](std::uint64_t to) {
        noteInexact(4, "the RIFF chunk says ", end - c_uiHeaderSize, " bytes, its chunks take ", to - c_uiHeaderSize);
        end = to;
    };
    if (bytes.getOffset() + c_uiHeaderSize > end) {
        if (!goesOnAfterEnd(bytes)) {
            return false;
        }
        moveEnd(fileEnd);
    }
    ByteCursor next = bytes;
    if (!takeChunk(next, chunk)) {
        return false;
    }
    if (chunk.isCutOff() && chunk.id != c_audioId && chunk.content.getOffset() < end && end < fileEnd) {
        // A size that even the file has no room for: here it is the RIFF chunk that is to be believed. Not so for the
        // audio, which recorders write before they know its size, and players take to go on to the end of the file.
        next = endWithin(bytes, end, chunk);
    }
    const std::uint64_t contentEnd = chunk.getContentEnd();
    const bool paddingIsOutside = contentEnd == end && next.getOffset() > end;
    if (contentEnd > end || (paddingIsOutside && goesOnAfterEnd(next))) {
        moveEnd(next.getOffset());
    } else if (paddingIsOutside) {
        next = bytes;
        next.skip(static_cast<std::size_t>(end - bytes.getOffset()));
        chunk.ePadding = RawChunk::Padding::Outside;
    }
    bytes = next;
    return true;
}

// Cuts off a chunk at the end of the RIFF chunk. A zero byte there is its padding.
//
// @return the place behind it
ByteCursor ChunkReader::endWithin(const ByteCursor& bytes, std::uint64_t end, RawChunk& chunk) {
    ByteCursor next = bytes;
    ByteCursor inside = bytes;
    next.narrow(static_cast<std::size_t>(end - bytes.getOffset()), inside);
    takeChunk(inside, chunk);
    if (chunk.content.remaining() % 2 != 0 && next.getRest()[0] == 0) {
        chunk.ePadding = RawChunk::Padding::Zero;
        next.skip(1);
    }
    return next;
}

// Whether whole chunks, and nothing else, fill the file from here on. Another file that was appended does not count.
// Neither do 64-bit sizes, which stand at the start of a file: here they are a rest of bytes that looks like them.
bool ChunkReader::goesOnAfterEnd(const ByteCursor& bytes) const {
    ByteCursor cursor = bytes;
    ChunkId id;
    return cursor.read(id) && id != c_riffId && id != c_sizes64Id && dividesIntoChunks(bytes, false);
}

bool ChunkReader::readList(ByteCursor bytes, ChunkList& list, unsigned depth) {
    RawChunk raw;
    while (takeChunk(bytes, raw)) {
        if (!add(raw, list, depth)) {
            return false;
        }
    }
    takeTail(bytes.getRest(), bytes.getOffset(), list);
    return true;
}

bool ChunkReader::add(const RawChunk& raw, ChunkList& list, unsigned depth) {
    if (!countChunk(raw.uiOffset)) {
        return false;
    }
    if (depth == 1 && raw.id == c_sizes64Id) {
        return fail(raw.uiOffset, "a chunk header", "\"ds64\": files with 64-bit sizes are not supported");
    }
    noteDefects(raw);
    Chunk& chunk = list.add(raw.id);
    chunk.m_uiFileOffset = static_cast<std::uint32_t>(raw.uiOffset);
    chunk.m_bChanged = false;
    if (chunk.m_pList) {
        chunk.m_pList->m_bChanged = false;
    }
    takePadding(raw, chunk);
    return addBelow(raw, chunk, depth);
}

// Gives a chunk its content: a list where it is one, plain bytes otherwise.
bool ChunkReader::addBelow(const RawChunk& raw, Chunk& chunk, unsigned depth) {
    ByteCursor content = raw.content;
    if (raw.id == c_cueId) {
        if (content.remaining() >= sizeof(std::uint32_t)) {
            return readCueTable(raw, *chunk.m_pList);
        }
        note(raw.uiOffset, "the cue chunk of ", content.remaining(), " bytes has no count of its points");
    } else if (isListId(raw.id)) {
        ChunkId type;
        if (!content.read(type)) {
            note(raw.uiOffset, "the list of ", content.remaining(), " bytes has no type");
        } else if (type != c_annotationsType && !dividesIntoChunks(content, true)) {
            note(raw.uiOffset, "the list \"", type, "\" does not divide into chunks; it is kept as plain bytes");
        } else if (depth > m_limits.uiMaxDepth) {
            return fail(raw.uiOffset, "a list", "lists are nested more than ", m_limits.uiMaxDepth, " deep");
        } else {
            chunk.m_pList->setType(type);
            return readList(content, *chunk.m_pList, depth + 1);
        }
    }
    chunk.m_pList.reset();
    chunk.m_bytes = share(raw.content.getRest());
    return true;
}

bool ChunkReader::readCueTable(const RawChunk& raw, ChunkList& list) {
    ByteCursor bytes = raw.content;
    std::uint32_t count = 0;
    bytes.read(count);
    const std::size_t room = bytes.remaining() / c_uiCueRecordSize;
    if (count > room) {
        noteInexact(raw.uiOffset, "the cue chunk says ", count, " points, ", room, " are there");
    }
    for (std::size_t i = std::min<std::size_t>(count, room); i > 0; --i) {
        if (!countChunk(bytes.getOffset())) {
            return false;
        }
        Chunk& record = list.add(c_cueRecordId);
        record.m_bChanged = false;
        record.m_uiFileOffset = static_cast<std::uint32_t>(bytes.getOffset());
        std::string_view content;
        bytes.read(c_uiCueRecordSize, content);
        record.m_bytes = share(content);
    }
    takeTail(bytes.getRest(), bytes.getOffset(), list);
    return true;
}

bool ChunkReader::countChunk(std::uint64_t offset) {
    if (m_uiChunks == m_limits.uiMaxChunks) {
        return fail(offset, "a chunk header", "more than ", m_limits.uiMaxChunks, " chunks");
    }
    ++m_uiChunks;
    return true;
}

void ChunkReader::takePadding(const RawChunk& raw, Chunk& chunk) {
    if (raw.ePadding == RawChunk::Padding::Missing || raw.ePadding == RawChunk::Padding::Outside) {
        chunk.m_ePadding = Chunk::Padding::Missing;
    }
    chunk.m_cPadding = raw.ePadding == RawChunk::Padding::NonZero ? raw.cPadding : '\0';
}

void ChunkReader::takeTail(std::string_view tail, std::uint64_t offset, ChunkList& list) {
    if (!tail.empty()) {
        note(offset, tail.size(), " bytes at the end of a list are no chunk");
        list.m_tail = share(tail);
    }
}

void ChunkReader::noteDefects(const RawChunk& raw) {
    if (!raw.id.isPrintable()) {
        note(raw.uiOffset, "the chunk identifier \"", raw.id, "\" is not printable");
    }
    if (raw.isCutOff()) {
        noteInexact(raw.uiOffset, "chunk \"", raw.id, "\" says ", raw.uiDeclaredSize, " bytes, ",
                    raw.content.remaining(), " are there");
    }
    if (raw.ePadding == RawChunk::Padding::Missing) {
        note(raw.uiOffset, "chunk \"", raw.id, "\" of ", raw.uiDeclaredSize, " bytes lacks its padding byte");
    } else if (raw.ePadding == RawChunk::Padding::Outside) {
        note(raw.getContentEnd(), "the padding byte after chunk \"", raw.id, "\" is outside the RIFF chunk");
    } else if (raw.ePadding == RawChunk::Padding::NonZero) {
        note(raw.getContentEnd(), "the padding byte after chunk \"", raw.id, "\" is ",
             static_cast<unsigned>(static_cast<unsigned char>(raw.cPadding)), " instead of 0");
    }
}

}  // namespace Zantrix::IFF
