#pragma once

#include <cstddef>
#include <span>

namespace Zantrix::Audio {

/// Sums the L bins of a spectrum in place into bands of L / bandCount bins each (truncated).
///
/// The last band is what trained classifiers expect, not what one would write today: a band is stored when the walk
/// reaches the next one, so the last group of bins is still unstored at the end and is added to whatever stands at the
/// last band's place. That is a bin of the original spectrum when L is a multiple of bandCount; otherwise it is the
/// band already stored there, and the bins between that band and the last group are lost.
///
/// @return how many values are left at the start of `spectrum`: bandCount, or all L when there are fewer bins than
///         bands, or no bands
inline std::size_t reduceSpectrum(std::span<double> spectrum, std::size_t bandCount) {
    const std::size_t binCount = spectrum.size();
    if (bandCount == 0 || bandCount > binCount) {
        return binCount;
    }
    const std::size_t groupSize = binCount / bandCount;
    double sum = 0.0;
    for (std::size_t i = 0; i < binCount; ++i) {
        if (i % groupSize == 0 && i > 0) {
            spectrum[(i - 1) / groupSize] = sum;
            sum = 0.0;
        }
        sum += spectrum[i];
    }
    spectrum[bandCount - 1] += sum;
    return bandCount;
}

}  // namespace Zantrix::Audio
