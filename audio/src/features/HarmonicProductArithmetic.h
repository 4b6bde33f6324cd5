#pragma once

#include "SpectrumBins.h"

#include <algorithm>
#include <cstddef>
#include <span>

/// The arithmetic of the harmonic products. `T` is one `double`, or a vector of doubles that holds the same bin of
/// several spectra side by side.
///
/// The factors of a product, and of each factor its scaling, are multiplied in a fixed order: the results are compared
/// with thresholds to the last bit. One harmonic at a time over all candidates keeps the inner loops plain strided
/// multiplications.
namespace Zantrix::Audio {

/// How many candidates, bin 0 included, have a fifth harmonic in a spectrum of `binCount` bins.
inline std::size_t candidateCount(std::size_t binCount) {
    return binCount == 0 ? 0 : (binCount - 1) / 5 + 1;
}

/// Of two kinds of harmonic product, where the factor of harmonic h for candidate i is found.
struct HarmonicBin {
    std::size_t operator()(std::size_t i, std::size_t h, std::size_t) const { return h * i; }
};

/// One candidate too far, wherever the spectrum reaches that far: the scale of the robust product, and every limit set
/// on it, rests on these bins. Past the end the harmonic itself stands in.
struct ShiftedHarmonicBin {
    std::size_t operator()(std::size_t i, std::size_t h, std::size_t binCount) const {
        const std::size_t shifted = (i + 1) * h;
        return shifted < binCount ? shifted : i * h;
    }
};

/// The product of each candidate bin with its harmonics 2 to 5, every factor scaled by the number of candidates.
/// Candidates below 100 Hz, bin 0 in any case, get 0.0: no call-progress tone lies there, mains hum does.
///
/// @param product  `candidateCount(spectrum.size())` values, overwritten
template <typename T, typename Bin>
[[gnu::always_inline]] inline void productOfHarmonics(std::span<const T> spectrum, std::span<T> product, Bin bin) {
    if (product.empty()) {
        return;
    }
    const double scale = static_cast<double>(product.size());
    product[0] = T{};
    for (std::size_t i = 1; i < product.size(); ++i) {
        product[i] = scale * spectrum[i];
    }
    for (std::size_t h = 2; h <= 5; ++h) {
        for (std::size_t i = 1; i < product.size(); ++i) {
            product[i] = (scale * spectrum[bin(i, h, spectrum.size())]) * product[i];
        }
    }
    std::fill_n(product.begin(), binsBelow(100.0, spectrum.size()), T{});
}

/// The earlier product of four factors, bins 1, 2, 3 and 4 counted from one, scaled by the number of all bins. Only the
/// first quarter of the candidates has all factors; the others get 0.0.
///
/// @param product  as many values as the spectrum, overwritten
template <typename T>
[[gnu::always_inline]] inline void oldHarmonicProduct(std::span<const T> spectrum, std::span<T> product) {
    const double scale = static_cast<double>(spectrum.size());
    const std::size_t complete = spectrum.size() / 4;
    std::fill(product.begin(), product.end(), T{});
    for (std::size_t i = 0; i < complete; ++i) {
        product[i] = scale * spectrum[i];
    }
    for (std::size_t h = 2; h <= 4; ++h) {
        for (std::size_t i = 0; i < complete; ++i) {
            product[i] = (scale * spectrum[(i + 1) * h - 1]) * product[i];
        }
    }
}

/// The product, for candidates 2 and above, of the bins half a candidate below each of the harmonics 1 to 5.
///
/// Each factor is scaled twice, ten times in all where the harmonic product scales five times: the two are weighed
/// against each other by models trained with this ratio between them.
///
/// @param product  `candidateCount(spectrum.size())` values, overwritten; the first two get 1.0
template <typename T>
[[gnu::always_inline]] inline void antiHarmonicProduct(std::span<const T> spectrum, std::span<T> product) {
    const double scale = static_cast<double>(product.size());
    std::fill(product.begin(), product.end(), T{} + 1.0);
    for (std::size_t h = 1; h <= 5; ++h) {
        for (std::size_t i = 2; i < product.size(); ++i) {
            product[i] = ((scale * spectrum[h * i - i / 2]) * scale) * product[i];
        }
    }
}

}  // namespace Zantrix::Audio
