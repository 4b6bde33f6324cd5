#pragma once

#include "SpectrumBins.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

/// The arithmetic of the spectral shape features. `T` is one `double`, or a vector of doubles that holds the same bin
/// of several spectra side by side; each lane then goes through the operations of one `double`, in the same order.
namespace Zantrix::Audio {

/// Raises base to the power of exponent, lane by lane.
template <typename T>
[[gnu::always_inline]] inline void raise(T& base, double exponent) {
    if constexpr (std::is_floating_point_v<T>) {
        base = std::pow(base, exponent);
    } else {
        for (std::size_t lane = 0; lane < sizeof(T) / sizeof(base[0]); ++lane) {
            base[lane] = std::pow(base[lane], exponent);
        }
    }
}

/// L times the geometric mean of L values, zeros left out of the product but counted in L.
///
/// A power is taken of blocks of 21 values, so that a product neither underflows nor overflows and no logarithm is
/// needed per value. The block's length is part of the result's last bits.
///
/// A mean of exactly 1.0 is not multiplied by L. That is what silence and a single full bin give, and classifiers are
/// trained to read 1.0 for both; scaled, the emptiest spectrum would pass for the flattest.
template <typename T>
[[gnu::always_inline]] inline void flatness(std::span<const T> spectrum, T& result) {
    constexpr std::size_t c_uiBlockLength = 21;
    const double binCount = static_cast<double>(spectrum.size());
    const double exponent = 1.0 / binCount;
    const T one = T{} + 1.0;
    T mean = one;
    T product = one;
    std::size_t inBlock = 0;
    for (const T& value : spectrum) {
        product *= value == 0.0 ? one : value;
        if (++inBlock == c_uiBlockLength) {
            raise(product, exponent);
            mean *= product;
            product = one;
            inBlock = 0;
        }
    }
    raise(product, exponent);
    mean *= product;
    result = mean == 1.0 ? mean : mean * binCount;
}

/// The bins of a band, both ends included.
struct BinRange {
    std::uint64_t first;
    std::uint64_t last;
};

/// The bins of `binCount` whose edges enclose the band from low to high, in Hz.
inline BinRange bandOfBins(std::uint64_t sampleRate, std::uint64_t low, std::uint64_t high, std::size_t binCount) {
    const auto position = [&](std::uint64_t frequency) {
        return static_cast<double>(frequency) / static_cast<double>(sampleRate) * 2.0 * static_cast<double>(binCount);
    };
    return {truncateToIndex(position(low) - 0.5), truncateToIndex(position(high) + 0.5)};
}

/// The power of the bins first .. last, weighted by their frequency in Hz; `last` must be a bin of the spectrum.
///
/// The width of a bin is a whole number of Hz, truncated: areas were always measured, and limits for them stored, with
/// 31 Hz where 128 bins of 31.25 Hz span 4000 Hz.
template <typename T>
[[gnu::always_inline]] inline void weightedArea(std::span<const T> spectrum, BinRange band, std::uint64_t sampleRate,
                                                T& area) {
    const double binWidth = static_cast<double>(sampleRate / (2 * spectrum.size()));
    area = T{};
    for (std::size_t k = band.first; k <= band.last; ++k) {
        area += (static_cast<double>(k) * spectrum[k]) * binWidth;
    }
}

}  // namespace Zantrix::Audio
