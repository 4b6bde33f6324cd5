#include "ChunkKinds.h"
#include "ChunkReader.h"
#include "ChunkWriter.h"
#include "ErrorText.h"
#include "StreamBytes.h"

#include <murvane/iff/IFFParser.h>

#include <algorithm>
#include <istream>
#include <iterator>
#include <new>
#include <ostream>
#include <utility>

namespace Zantrix::IFF {

namespace {

// Other kinds of file that begin alike, and what to say of them.
struct OtherKind {
    ChunkId id;
    const char* szText;
};

constexpr OtherKind c_otherKinds[] = {
    {"RF64", "files with 64-bit sizes are not supported"},
    {"BW64", "files with 64-bit sizes are not supported"},
    {"RIFX", "files with big-endian sizes are not supported"},
};

bool checkHeader(std::string_view bytes, std::string& error) {
    ByteCursor cursor(bytes);
    ChunkId id;
    std::uint32_t size = 0;
    ChunkId type;
    const bool complete = cursor.read(id) && cursor.read(size) && cursor.read(type);
    const auto* other = std::find_if(std::begin(c_otherKinds), std::end(c_otherKinds),
                                     [&](const OtherKind& kind) { return kind.id == id; });
    if (other != std::end(c_otherKinds)) {
        error = errorText(0, "the RIFF header", "\"", id, "\": ", other->szText);
    } else if (!complete) {
        error = errorText(0, "the RIFF header", bytes.size(), " bytes present, ", c_uiRiffHeaderSize, " needed");
    } else if (id != c_riffId) {
        error = errorText(0, "the RIFF header", "\"", id, "\" instead of \"", c_riffId, "\"");
    } else if (type != c_waveType) {
        error = errorText(c_uiHeaderSize, "the form type", "\"", type, "\" instead of \"", c_waveType, "\"");
    } else {
        return true;
    }
    return false;
}

}  // namespace

IFFParser::IFFParser(const ReadLimits& limits) : m_limits(limits), m_riff(c_riffId) {}

void IFFParser::clear() {
    m_riff = Chunk(c_riffId);
    m_trailing = SharedBytes();
    m_vFindings.clear();
    m_strError.clear();
    m_bValid = false;
    m_bExact = false;
}

std::istream& IFFParser::read(std::istream& is) {
    clear();
    if (!is.good()) {
        m_strError = errorText(0, "the RIFF header", "the stream has failed or ended before");
        is.setstate(std::ios::failbit);
        return is;
    }
    // Reading to the end fails by nature; on a stream of our own that does not show in the caller's.
    std::istream source(is.rdbuf());
    std::ios::iostate failure = std::ios::goodbit;
    try {
        m_bValid = parse(source);
    } catch (const std::bad_alloc&) {
        m_strError = errorText(0, "the file", "not enough memory");
    }
    if (!m_bValid) {
        std::string error = std::move(m_strError);
        clear();
        m_strError = std::move(error);
        failure = std::ios::failbit;
    }
    is.setstate(failure | (source.rdstate() & (std::ios::eofbit | std::ios::badbit)));
    return is;
}

bool IFFParser::parse(std::istream& source) {
    std::string bytes(c_uiRiffHeaderSize, '\0');
    source.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(source.gcount()));
    const std::uint64_t maxBytes = std::min(m_limits.uiMaxBytes, ReadLimits().uiMaxBytes);
    if (source.bad()) {
        m_strError = errorText(0, "the RIFF header", "the stream reported an error");
        return false;
    }
    if (!checkHeader(bytes, m_strError) || !readRest(source, maxBytes, bytes, m_strError)) {
        return false;
    }
    ChunkReader reader(std::make_shared<const std::string>(std::move(bytes)), m_limits);
    if (!reader.read(m_riff, m_trailing)) {
        m_strError = reader.getError();
        return false;
    }
    m_vFindings = std::move(reader.getFindings());
    m_bExact = reader.isExact();
    return true;
}

std::ostream& IFFParser::write(std::ostream& os) {
    m_strError.clear();
    ChunkWriter writer;
    if (!m_bValid) {
        m_strError = "writing the file: no file has been read";
    } else if (!writer.measure(m_riff)) {
        m_strError = writer.getError();
    } else {
        writer.write(m_riff, m_trailing, os);
        return os;
    }
    os.setstate(std::ios::failbit);
    return os;
}

bool IFFParser::find(ChunkId id, ChunkPos& position) {
    position.start(getChunks());
    position.m_id = id;
    return findNext(position);
}

bool IFFParser::findNext(ChunkPos& position) {
    while (position.advance()) {
        if (position.getChunk()->getId() == position.m_id) {
            return true;
        }
    }
    return false;
}

bool IFFParser::findOwner(const ChunkList& list, ChunkPos& position) {
    position.start(getChunks());
    while (position.advance()) {
        if (position.getChunk()->getList() == &list) {
            position.m_id = position.getChunk()->getId();
            return true;
        }
    }
    return false;
}

void IFFParser::remove(ChunkPos& position) {
    if (position.isValid()) {
        ChunkPos::Step& step = position.m_vPath.back();
        step.itChunk = step.pList->erase(step.itChunk);
        position.m_bOnChunk = false;
    }
}

}  // namespace Zantrix::IFF
