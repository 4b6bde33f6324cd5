#pragma once

#include <murvane/audio/features/EnergyFeatures.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

/// The arithmetic of sample energies and of segment maxima.
namespace Zantrix::Audio {

/// The bin of a sample's energy among `binCount` equal ones from 0 to `energyMax`. Energies at the top or beyond it,
/// and NaN, belong to the last bin. Compared as doubles, since not every energy fits an integer.
inline std::size_t energyBin(double sample, double energyMax, std::size_t binCount) {
    const double position = sample * sample * static_cast<double>(binCount) / energyMax;
    const std::size_t last = binCount - 1;
    return position < static_cast<double>(last) ? static_cast<std::size_t>(position) : last;
}

/// Counts the samples whose energy lies in each bin.
///
/// @param bins  at least one, overwritten
inline void energyHistogram(std::span<const double> samples, double energyMax, std::span<std::uint64_t> bins) {
    std::fill(bins.begin(), bins.end(), 0);
    for (const double sample : samples) {
        ++bins[energyBin(sample, energyMax, bins.size())];
    }
}

/// Adds the energies strictly above a threshold.
inline void addEnergiesAbove(std::span<const double> samples, double threshold, EnergySum& accepted) {
    for (const double sample : samples) {
        const double energy = sample * sample;
        if (energy > threshold) {
            accepted.dSum += energy;
            ++accepted.uiCount;
        }
    }
}

inline double meanOf(const EnergySum& accepted) {
    return accepted.uiCount > 0 ? accepted.dSum / static_cast<double>(accepted.uiCount) : 0.0;
}

/// The mean of the accepted maxima, of which there is at least one.
inline double meanOf(const SegmentMaxima& maxima) {
    return maxima.dSum / static_cast<double>(maxima.uiCount);
}

/// Judges the maximum of the open segment by its height above the floor. More than twice that of the mean makes all
/// before it background: it starts anew. Less than half of it is a gap and left out.
inline void closeSegment(double floor, SegmentMaxima& maxima) {
    const double maximum = maxima.dCurrentMaximum;
    if (maxima.uiCount == 0 || maximum - floor > 2.0 * (meanOf(maxima) - floor)) {
        maxima.dSum = maximum;
        maxima.dMinimum = maximum;
        maxima.uiCount = 1;
    } else if (!(0.5 * (meanOf(maxima) - floor) > maximum - floor)) {
        maxima.dSum += maximum;
        maxima.dMinimum = std::min(maxima.dMinimum, maximum);
        ++maxima.uiCount;
    }
}

/// Goes on through the samples. A segment closes at the sample that brings the phase above one half; that sample opens
/// the next one, with the phase 0.
///
/// The phase adds up steps instead of counting samples: with a step that is not exact in binary, rounding decides where
/// segments close, and stored limits were measured on those segments.
inline void addSegments(std::span<const double> samples, double step, double floor, SegmentMaxima& maxima) {
    for (const double sample : samples) {
        const double amplitude = std::fabs(sample);
        maxima.dPhase += step;
        if (maxima.dPhase > 0.5) {
            closeSegment(floor, maxima);
            maxima.dPhase = 0.0;
            maxima.dCurrentMaximum = amplitude;
        } else {
            maxima.dCurrentMaximum = std::max(maxima.dCurrentMaximum, amplitude);
        }
    }
}

}  // namespace Zantrix::Audio
