#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Zantrix::Audio {

/// Whether the signal crosses zero from one sample to the next. Reaching zero counts once, at the first sample that is
/// exactly zero; leaving it does not count.
///
/// Bitwise operators, since where noise crosses zero no processor can foresee: a branch here costs more than the rest.
inline bool isCrossing(double previous, double sample) {
    return static_cast<bool>((previous * sample < 0.0) | ((sample == 0.0) & (previous != 0.0)));
}

/// Counts the samples at which the signal crosses zero.
///
/// @param samples   at least one
/// @param previous  the sample before them; NaN if there is none
inline std::uint64_t countCrossings(std::span<const double> samples, double previous) {
    std::uint64_t crossings = isCrossing(previous, samples[0]) ? 1 : 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        crossings += isCrossing(samples[i - 1], samples[i]) ? 1 : 0;
    }
    return crossings;
}

}  // namespace Zantrix::Audio
