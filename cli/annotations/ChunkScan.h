#pragma once

#include "annotations/Recording.h"

#include <murvane/iff/IFFParser.h>
#include <murvane/iff/WavChunks.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Everything in a WAV file that has to do with annotations, as it stands in its chunks, whether it fits together or
/// not. Offsets are places in the file, in bytes.
namespace Zantrix::Cli {

struct ScannedCue {
    std::uint32_t offset = 0;  ///< of the record
    std::uint32_t id = 0;
    std::uint32_t sample = 0;
};

struct ScannedLength {
    std::uint32_t offset = 0;  ///< of the "ltxt" chunk
    std::uint32_t id = 0;
    std::uint32_t samples = 0;
    bool hasPurpose = false;   ///< another one than a region, or none
    bool hasLanguage = false;  ///< or country, dialect, code page
    bool hasText = false;      ///< besides its label
};

/// A "labl" or a "note".
struct ScannedText {
    std::uint32_t offset = 0;
    std::uint32_t id = 0;
    std::string_view text;  ///< up to its terminator
    bool isTerminated = false;
    bool hasRest = false;  ///< something but zero bytes behind the terminator
};

/// A loop of the "smpl" chunk; both samples belong to it.
struct ScannedLoop {
    std::uint64_t offset = 0;
    std::uint32_t id = 0;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

/// A chunk that is too short for what it must hold, or holds less than it says.
struct ShortChunk {
    std::uint64_t offset = 0;
    IFF::ChunkId id;
    std::uint64_t present = 0;
    std::uint64_t needed = 0;
};

/// Whether chunks of this kind belong into a list of annotations.
bool isText(IFF::ChunkId id);

/// Views go into the parser's chunks: it must outlive the scan, unchanged.
struct ChunkScan {
    explicit ChunkScan(const IFF::IFFParser& parser) { visit(parser.getChunks(), nullptr); }

    /// The length of the audio in samples of all channels; nothing when these cannot be counted.
    std::optional<std::uint64_t> samples() const;

    /// Whether the audio is samples of one size, one after the other: PCM, float, A-law or mu-law.
    bool isPlain() const;

    /// The bytes of a sample of all channels; 0 when they are not known.
    unsigned frameBytes() const {
        return isPlain() ? fmt->m_usNbOfChannels * ((fmt->m_usSignBitsPerSample + 7u) / 8) : 0;
    }

    /// Why the library, which divides bytes by bits, would count other samples than there are, or none; empty when it
    /// counts right, or there is no format.
    std::string whyUncountable() const;

    /// Whether the audio is as the library annotates it, and counts it right.
    bool canBeAnnotated() const {
        return samples() && fmt->m_usNbOfChannels == 1 && fmt->m_uiSampleRate > 0 && whyUncountable().empty();
    }

    /// Whether there is any chunk that belongs to annotations.
    bool hasAny() const { return !cues.empty() || m_lengthOwner || m_labelOwner || m_noteOwner; }

    /// The list that the library takes out with the last annotation, as nothing else is in it; null if there is none.
    const IFF::Chunk* emptiedList() const;

    std::optional<IFF::WavFmtChunk> fmt;    ///< the first that is long enough
    std::vector<const IFF::Chunk*> fmts;    ///< all of them
    std::vector<const IFF::Chunk*> datas;   ///< all "data" chunks
    std::vector<const IFF::Chunk*> cues;    ///< all "cue " chunks
    std::vector<const IFF::Chunk*> lists;   ///< those of the type "adtl"
    std::vector<const IFF::Chunk*> strays;  ///< what belongs into such a list, but stands outside of one
    std::vector<ScannedCue> points;
    std::vector<ScannedLength> lengths;
    std::vector<ScannedText> labels;
    std::vector<ScannedText> notes;
    std::vector<ScannedLoop> loops;
    std::vector<ShortChunk> shorts;
    std::uint64_t unusedCueBytes = 0;  ///< in "cue " chunks, of no record

private:
    void visit(const IFF::ChunkList& list, const IFF::Chunk* owner);
    void take(const IFF::Chunk& chunk, const IFF::Chunk* owner);
    void takePoints(const IFF::Chunk& cue);
    void takeLoops(const IFF::Chunk& chunk);
    template <typename Content>
    bool decode(const IFF::Chunk& chunk, std::size_t needed, Content& content);

    // What the last chunk of each kind is in: null for the file itself, nothing without such a chunk.
    std::optional<const IFF::Chunk*> m_lengthOwner;
    std::optional<const IFF::Chunk*> m_labelOwner;
    std::optional<const IFF::Chunk*> m_noteOwner;
};

}  // namespace Zantrix::Cli
