#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

/// Amplitudes measured against a peak. Counting takes comparisons that no NaN passes.
namespace Zantrix::Audio {

/// The larger of |smallest sample| and |largest sample|; 0.0 without samples.
inline double peakAmplitude(std::span<const double> samples) {
    if (samples.empty()) {
        return 0.0;
    }
    const auto [smallest, largest] = std::minmax_element(samples.begin(), samples.end());
    return std::max(std::fabs(*smallest), std::fabs(*largest));
}

/// How many samples are strictly closer to zero than the threshold.
inline std::uint64_t countBelow(std::span<const double> samples, double threshold) {
    return static_cast<std::uint64_t>(
        std::count_if(samples.begin(), samples.end(), [&](double sample) { return std::fabs(sample) < threshold; }));
}

/// How many samples lie above 1/5 of the peak, above 1/10, above 1/50, and how many are left.
///
/// Counted for each threshold by itself: a walk through the thresholds would branch on noise, which no processor
/// foresees.
inline std::array<std::uint64_t, 4> amplitudeBands(std::span<const double> samples, double peak) {
    std::array<std::uint64_t, 3> above{};
    for (const double sample : samples) {
        const double amplitude = std::fabs(sample);
        above[0] += amplitude > peak / 5.0 ? 1 : 0;
        above[1] += amplitude > peak / 10.0 ? 1 : 0;
        above[2] += amplitude > peak / 50.0 ? 1 : 0;
    }
    return {above[0], above[1] - above[0], above[2] - above[1], samples.size() - above[2]};
}

}  // namespace Zantrix::Audio
