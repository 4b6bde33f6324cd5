#pragma once

#include <murvane/iff/ChunkId.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The contents of the WAV chunks that programs work with, as values. All integers are unsigned and stored least
/// significant byte first; the offsets of the fields, in bytes, stand beside them.
///
/// Every class has the same two operations:
/// - `decode(data, size)` takes the fields from a chunk's content. It returns false, and leaves the object as it
///   was, if the content is too short for the fields before the text or the extra bytes, or if `data` is null.
/// - `encode(data)` replaces `data` by the content that `decode` reads.
namespace Zantrix::IFF {

/// "fmt ": how the samples of the "data" chunk are stored.
class MURVANE_API WavFmtChunk {
public:
    std::uint16_t m_usCompressionCode = 0;        ///< 0: 1 is PCM
    std::uint16_t m_usNbOfChannels = 0;           ///< 2
    std::uint32_t m_uiSampleRate = 0;             ///< 4: samples per second
    std::uint32_t m_uiAverageBytesPerSecond = 0;  ///< 8
    std::uint16_t m_usBlockAlign = 0;             ///< 12: bytes of one sample of all channels
    std::uint16_t m_usSignBitsPerSample = 0;      ///< 14
    std::vector<char> m_vExtra;                   ///< 16: whatever follows, kept as it is

    bool decode(const char* data, std::size_t size);
    void encode(std::vector<char>& data) const;
};

/// "cuep": one record of 24 bytes of a "cue " chunk.
class MURVANE_API WavCuePointChunk {
public:
    std::uint32_t m_uiIdentifier = 0;    ///< 0: what "labl" and "ltxt" chunks refer to
    std::uint32_t m_uiPosition = 0;      ///< 4: sample at which the point comes in the play order
    ChunkId m_dataChunkId{"data"};       ///< 8: chunk that holds the sample
    std::uint32_t m_uiChunkStart = 0;    ///< 12: byte offset of that chunk in a list of several
    std::uint32_t m_uiBlockStart = 0;    ///< 16: byte offset of the block with the sample, for compressed data
    std::uint32_t m_uiSampleOffset = 0;  ///< 20: sample within the block; for PCM, from the beginning

    /// Content beyond 24 bytes is ignored.
    bool decode(const char* data, std::size_t size);
    void encode(std::vector<char>& data) const;
};

/// "labl": the name of a cue point.
class MURVANE_API WavLabelChunk {
public:
    std::uint32_t m_uiIdentifier = 0;  ///< 0: of the cue point
    std::string m_strText;             ///< 4: up to the first zero byte; one is written after it

    /// The text ends at the first zero byte or with the content.
    bool decode(const char* data, std::size_t size);
    /// A text with a zero byte in it is written up to that byte.
    void encode(std::vector<char>& data) const;
};

/// "ltxt": the interval that begins at a cue point.
class MURVANE_API WavLabeledTextChunk {
public:
    std::uint32_t m_uiIdentifier = 0;    ///< 0: of the cue point
    std::uint32_t m_uiSampleLength = 0;  ///< 4: samples in the interval
    ChunkId m_purpose{"rgn "};           ///< 8
    std::uint16_t m_usCountry = 0;       ///< 12
    std::uint16_t m_usLanguage = 0;      ///< 14
    std::uint16_t m_usDialect = 0;       ///< 16
    std::uint16_t m_usCodePage = 0;      ///< 18
    std::vector<char> m_vText;           ///< 20: whatever follows, kept as it is

    bool decode(const char* data, std::size_t size);
    void encode(std::vector<char>& data) const;
};

}  // namespace Zantrix::IFF
