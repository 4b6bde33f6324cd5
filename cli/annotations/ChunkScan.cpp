#include "annotations/ChunkScan.h"

#include <murvane/core/Logging.h>
#include <murvane/iff/ByteCursor.h>

#include <algorithm>
#include <iterator>

namespace Zantrix::Cli {

namespace {

constexpr std::size_t c_uiFmtSize = 16;
constexpr std::uint16_t c_plainTags[] = {1, 3, 6, 7, 0xfffe};  // PCM, float, A-law, mu-law, extensible
constexpr std::size_t c_uiLabelHeader = 4;
constexpr std::size_t c_uiLengthSize = 20;

// What programs write for an interval that is nothing but an interval.
constexpr IFF::ChunkId c_usualPurposes[] = {IFF::ChunkId("rgn "), IFF::ChunkId("    "), IFF::ChunkId()};

// The "smpl" chunk: where it counts its loops, how much precedes them, and the size of one.
constexpr std::size_t c_uiLoopCountAt = 28;
constexpr std::size_t c_uiLoopsHeader = 36;
constexpr std::size_t c_uiLoopSize = 24;

/// To grow into the size of a large list would take three times its memory. Small ones, of which there may be a
/// million, must not make the items move each time.
template <typename Item>
void makeRoom(std::vector<Item>& items, std::size_t more) {
    if (more > items.size()) {
        items.reserve(items.size() + more);
    }
}

bool isAnnotationList(const IFF::Chunk& chunk) {
    return chunk.getList() != nullptr && chunk.getList()->getType() == IFF::ChunkId("adtl");
}

}  // namespace

bool isText(IFF::ChunkId id) {
    return id == IFF::ChunkId("ltxt") || id == IFF::ChunkId("labl") || id == IFF::ChunkId("note");
}

std::optional<std::uint64_t> ChunkScan::samples() const {
    if (frameBytes() == 0 || datas.empty()) {
        return std::nullopt;
    }
    return datas.front()->getSize() / frameBytes();
}

bool ChunkScan::isPlain() const {
    return fmt &&
           std::find(std::begin(c_plainTags), std::end(c_plainTags), fmt->m_usCompressionCode) != std::end(c_plainTags);
}

std::string ChunkScan::whyUncountable() const {
    if (!fmt) {
        return {};
    }
    if (!isPlain()) {
        return concatenate("format ", fmt->m_usCompressionCode,
                           " is none whose samples can be counted in bytes (PCM, float, A-law, mu-law)");
    }
    const unsigned bits = fmt->m_usSignBitsPerSample;
    if (bits == 0 || bits % 8 != 0) {
        return concatenate("samples of ", bits, " bits are not whole bytes");
    }
    return fmt->m_usBlockAlign == frameBytes() ? ""
                                               : concatenate("a sample of all channels takes ", frameBytes(),
                                                             " bytes, the format says ", fmt->m_usBlockAlign);
}

const IFF::Chunk* ChunkScan::emptiedList() const {
    const auto owner = m_noteOwner ? m_noteOwner : m_labelOwner ? m_labelOwner : m_lengthOwner;
    if (!owner || *owner == nullptr) {
        return nullptr;
    }
    const IFF::ChunkList& list = *(*owner)->getList();
    const bool isEmptied = std::all_of(list.begin(), list.end(), [](const IFF::Chunk& chunk) {
        return chunk.getId() == IFF::ChunkId("cue ") || isText(chunk.getId());
    });
    return isEmptied && list.getTail().empty() ? *owner : nullptr;
}

void ChunkScan::visit(const IFF::ChunkList& list, const IFF::Chunk* owner) {
    for (const IFF::Chunk& chunk : list) {
        take(chunk, owner);
        if (chunk.getList() != nullptr && chunk.getId() != IFF::ChunkId("cue ")) {
            if (isAnnotationList(chunk)) {
                lists.push_back(&chunk);
                makeRoom(lengths, chunk.getList()->size() / 2);  // of an annotation, it holds a length and a label
                makeRoom(labels, chunk.getList()->size() / 2);
            }
            visit(*chunk.getList(), &chunk);
        }
    }
}

void ChunkScan::take(const IFF::Chunk& chunk, const IFF::Chunk* owner) {
    const IFF::ChunkId id = chunk.getId();
    const std::uint32_t offset = chunk.getFileOffset();
    if (id == IFF::ChunkId("fmt ")) {
        IFF::WavFmtChunk content;
        fmts.push_back(&chunk);
        if (decode(chunk, c_uiFmtSize, content) && !fmt) {
            fmt = content;
        }
    } else if (id == IFF::ChunkId("data")) {
        datas.push_back(&chunk);
    } else if (id == IFF::ChunkId("cue ")) {
        cues.push_back(&chunk);
        takePoints(chunk);
    } else if (id == IFF::ChunkId("smpl")) {
        takeLoops(chunk);
    } else if (id == IFF::ChunkId("ltxt")) {
        IFF::WavLabeledTextChunk content;
        if (decode(chunk, c_uiLengthSize, content)) {
            ScannedLength length{offset, content.m_uiIdentifier, content.m_uiSampleLength};
            length.hasPurpose = std::find(std::begin(c_usualPurposes), std::end(c_usualPurposes), content.m_purpose) ==
                                std::end(c_usualPurposes);
            length.hasLanguage =
                (content.m_usCountry | content.m_usLanguage | content.m_usDialect | content.m_usCodePage) != 0;
            length.hasText = std::any_of(content.m_vText.begin(), content.m_vText.end(), [](char c) { return c != 0; });
            lengths.push_back(length);
        }
    } else if (id == IFF::ChunkId("labl") || id == IFF::ChunkId("note")) {
        IFF::WavLabelChunk content;
        if (decode(chunk, c_uiLabelHeader, content)) {
            const std::string_view bytes(chunk.getData() + c_uiLabelHeader, chunk.getSize() - c_uiLabelHeader);
            const std::size_t length = content.m_strText.size();
            const bool hasRest = bytes.find_first_not_of('\0', length) != std::string_view::npos;
            (id == IFF::ChunkId("labl") ? labels : notes)
                .push_back({offset, content.m_uiIdentifier, bytes.substr(0, length), length < bytes.size(), hasRest});
        }
    } else {
        return;
    }
    if (isText(id)) {
        (id == IFF::ChunkId("ltxt") ? m_lengthOwner : id == IFF::ChunkId("labl") ? m_labelOwner : m_noteOwner) = owner;
        if (owner == nullptr || !isAnnotationList(*owner)) {
            strays.push_back(&chunk);
        }
    }
}

void ChunkScan::takePoints(const IFF::Chunk& cue) {
    if (cue.getList() == nullptr) {
        unusedCueBytes += cue.getSize();
        return;  // without even a count; the parser has noted that
    }
    unusedCueBytes += cue.getList()->getTail().size();
    makeRoom(points, cue.getList()->size());
    for (const IFF::Chunk& record : *cue.getList()) {
        IFF::WavCuePointChunk content;
        if (content.decode(record.getData(), record.getSize())) {
            points.push_back({record.getFileOffset(), content.m_uiIdentifier, content.m_uiSampleOffset});
        }
    }
}

void ChunkScan::takeLoops(const IFF::Chunk& chunk) {
    const std::string_view bytes(chunk.getData(), chunk.getSize());
    IFF::ByteCursor cursor(bytes, chunk.getFileOffset() + 8);
    std::uint32_t count = 0;
    if (!cursor.skip(c_uiLoopCountAt) || !cursor.read(count) || !cursor.skip(c_uiLoopsHeader - c_uiLoopCountAt - 4)) {
        shorts.push_back({chunk.getFileOffset(), chunk.getId(), bytes.size(), c_uiLoopsHeader});
        return;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        ScannedLoop loop;
        loop.offset = cursor.getOffset();
        std::uint32_t kind = 0;
        std::uint32_t fraction = 0;
        std::uint32_t plays = 0;
        if (!cursor.read(loop.id) || !cursor.read(kind) || !cursor.read(loop.first) || !cursor.read(loop.last) ||
            !cursor.read(fraction) || !cursor.read(plays)) {
            const std::uint64_t needed = c_uiLoopsHeader + std::uint64_t{count} * c_uiLoopSize;
            shorts.push_back({chunk.getFileOffset(), chunk.getId(), bytes.size(), needed});
            return;
        }
        loops.push_back(loop);
    }
}

template <typename Content>
bool ChunkScan::decode(const IFF::Chunk& chunk, std::size_t needed, Content& content) {
    if (content.decode(chunk.getData(), chunk.getSize())) {
        return true;
    }
    shorts.push_back({chunk.getFileOffset(), chunk.getId(), chunk.getSize(), needed});
    return false;
}

}  // namespace Zantrix::Cli
