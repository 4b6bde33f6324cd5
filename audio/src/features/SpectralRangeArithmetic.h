#pragma once

#include "SpectrumBins.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Zantrix::Audio {

/// A band of bins around a frequency: those from centreIndex - width to centreIndex + width.
struct BinsAround {
    std::uint64_t centreIndex;
    std::uint64_t width;
    double relativePosition;  ///< from the frequency of the centre bin to the one asked for, in bins
};

/// The band around `centreHz` in a spectrum of `binCount` bins. A half is rounded up to the next bin; a part of a bin
/// at the band's edge takes the whole bin in.
inline BinsAround binsAround(std::uint64_t centreHz, std::uint64_t widthHz, std::size_t binCount) {
    const double binWidth = c_dTopFrequencyHz / static_cast<double>(binCount);
    const double centre = static_cast<double>(centreHz);
    const std::uint64_t centreIndex = truncateToIndex(centre / binWidth + 0.5);
    return {centreIndex, truncateToIndex(std::ceil(static_cast<double>(widthHz) / binWidth)),
            (centre - static_cast<double>(centreIndex) * binWidth) / binWidth};
}

}  // namespace Zantrix::Audio
