#pragma once

#include <limits>
#include <string>
#include <vector>

namespace CallProgress {

constexpr int c_iNoEnd = std::numeric_limits<int>::max();

/// From the first to the last value, both included.
struct RangeMs {
    int first = 0;
    int last = c_iNoEnd;
};

/// What a signal sounds like while it is on.
struct Tone {
    std::vector<int> frequenciesHz;  ///< one, or two that sound together
    int halfWidthHz;                 ///< how far each may be off

    bool operator==(const Tone&) const = default;
};

/// A signal: a tone and its cadence.
struct Signal {
    std::string name;
    Tone tone;
    RangeMs on;
    RangeMs off;          ///< between one burst and the next
    int leastBursts = 1;  ///< in a row that make the signal
};

/// The signals, most particular first: of those that share a tone, the first whose cadence fits has it.
///
/// Frequencies and cadences of call progress are those of North America (the national tones listed with ITU-T E.180,
/// and Telcordia GR-506-CORE), of push buttons ITU-T Q.23, of the fax calling tone ITU-T T.30. Cadences may be off by a
/// sixth or so, as exchanges are.
const std::vector<Signal>& signals();

/// Special information tones: three bursts of one tone each, one right after the other.
struct Sequence {
    std::string name;
    std::vector<std::vector<Tone>> parts;  ///< alternatives for each part
    RangeMs on;
    RangeMs off;
};

const Sequence& specialInformation();

/// Every tone that some signal has, each once.
std::vector<Tone> allTones();

}  // namespace CallProgress
