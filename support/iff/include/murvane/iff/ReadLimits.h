#pragma once

#include <cstddef>
#include <cstdint>

namespace Zantrix::IFF {

/// What a reader takes from a stranger before it refuses the file.
struct ReadLimits {
    /// Bytes in the whole file; 4 GiB, which is as far as the sizes of RIFF reach, also if more is asked for.
    std::uint64_t uiMaxBytes = std::uint64_t{1} << 32;

    /// Chunks and cue records. The default leaves room for 2^20 annotations of three chunks each; that many take
    /// about 300 MB.
    std::size_t uiMaxChunks = std::size_t{1} << 22;

    /// Lists within lists. Real files have one; the tree is walked recursively, which this keeps shallow.
    unsigned uiMaxDepth = 64;
};

}  // namespace Zantrix::IFF
