#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Zantrix::Cli {

/// What the header of a WAV file says about its audio, and whether that can be true.
struct WavHeader {
    enum class Size {
        Fits,      ///< the data chunk lies within the file
        Cut,       ///< the file ends before the data chunk does
        Streamed,  ///< a size no writer counted: it wrote to a pipe and put in the largest it could
        NeverSet   ///< 0, while something that is not a chunk follows: the writer was stopped before it came back
    };

    Size size = Size::Fits;
    std::uint64_t claimedBytes = 0;  ///< of the data chunk
    std::uint64_t presentBytes = 0;  ///< from the start of the data chunk to the end of the file

    /// What the format chunk in front of the audio says.
    struct Format {
        std::uint32_t rate = 0;           ///< in Hz
        std::uint16_t bitsPerSample = 0;  ///< that are in use
    };
    std::optional<Format> format;

    /// What is wrong with it, as a message about the file; "" for one that fits.
    std::string describe() const;
};

/// Looks at the header of a file; nothing for a file that is not RIFF/WAVE or has no data chunk.
std::optional<WavHeader> readWavHeader(const std::string& path);

/// The same when it is known where the header of the data chunk stands; nothing when the file ends before that does.
std::optional<WavHeader> readWavHeader(const std::string& path, std::uint64_t dataChunk);

/// The chunks of a WAV file that say whether it can be taken apart.
struct WavChunkCounts {
    std::size_t data = 0;
    std::size_t lists = 0;
    bool areAllCounted = true;  ///< false for more chunks than anybody has a use for
};

/// Counts chunks, none of those within others; nothing for a file that is not RIFF/WAVE.
std::optional<WavChunkCounts> countWavChunks(const std::string& path);

}  // namespace Zantrix::Cli
