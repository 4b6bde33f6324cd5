#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

/// From frequencies to bins of a spectrum.
namespace Zantrix::Audio {

/// The bins of every spectrum are taken to span 0 Hz to this frequency: telephone audio has 8000 samples a second.
inline constexpr double c_dTopFrequencyHz = 4000.0;

/// Truncates towards zero. Nothing wraps: NaN and negative values give 0, values beyond 64 bits the largest index.
inline std::uint64_t truncateToIndex(double value) {
    constexpr double c_dTwoTo64 = 18446744073709551616.0;
    if (!(value > 0.0)) {
        return 0;
    }
    return value < c_dTwoTo64 ? static_cast<std::uint64_t>(value) : std::numeric_limits<std::uint64_t>::max();
}

/// How many of `binCount` bins lie wholly below a frequency. The width of a bin is rounded before it divides: the other
/// order of the divisions gives another count for some lengths.
inline std::size_t binsBelow(double frequencyHz, std::size_t binCount) {
    return truncateToIndex(frequencyHz / (c_dTopFrequencyHz / static_cast<double>(binCount)));
}

}  // namespace Zantrix::Audio
