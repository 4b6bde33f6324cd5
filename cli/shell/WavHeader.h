#pragma once

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

    /// What is wrong with it, as a message about the file; "" for one that fits.
    std::string describe() const;
};

/// Looks at the header of a file; nothing for a file that is not RIFF/WAVE or has no data chunk.
std::optional<WavHeader> readWavHeader(const std::string& path);

/// The same when it is known where the header of the data chunk stands; nothing when the file ends before that does.
std::optional<WavHeader> readWavHeader(const std::string& path, std::uint64_t dataChunk);

}  // namespace Zantrix::Cli
