#pragma once

#include <murvane/iff/Finding.h>
#include <murvane/iff/IFFParser.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// What is wrong with a file.
struct Defects {
    std::vector<IFF::Finding> findings;  ///< the first of them, in the order of their places in the file
    std::size_t omitted = 0;             ///< how many more there are, at least
    std::string obstacle;                ///< why the audio cannot be annotated, although its format is right
};

/// Looks at all of a file that was read: what the parser noted, whether the audio can be counted in samples, and
/// whether cue points, intervals and labels fit together and the audio. Nothing is repaired.
Defects findDefects(const IFF::IFFParser& parser);

}  // namespace Zantrix::Cli
