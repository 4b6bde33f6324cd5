#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Every figure is a pair: the library, and beside it a bare loop that does the same arithmetic with plain arrays. Both
/// are measured in one run, so that their ratio holds on any machine and under any load.
namespace Zantrix::Bench {

/// One pass over the input. It records its results where it is given somewhere to record them, which is for comparison
/// and is not timed.
using Record = std::vector<double>;
using Loop = std::function<void(Record*)>;

struct Pair {
    std::string name;
    double audioSeconds;                ///< of a pass; 0: not a matter of audio
    std::size_t windows;                ///< of a pass; 0: not a matter of windows
    std::function<Loop()> makeLibrary;  ///< each loop made has a state of its own
    std::function<Loop()> makeBare;
};

/// Registers "<name>/library" and "<name>/bare". Neither is timed before both have given the same results to the bit.
void registerPair(Pair pair);

inline void record(Record* pRecord, const double* values, std::size_t count) {
    if (pRecord != nullptr) {
        pRecord->insert(pRecord->end(), values, values + count);
    }
}

}  // namespace Zantrix::Bench
