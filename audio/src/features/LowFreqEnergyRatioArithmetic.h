#pragma once

#include "SpectrumBins.h"

#include <cstddef>
#include <span>

namespace Zantrix::Audio {

/// The sum of the bins first .. end - 1, in the order of their indices. `T` is one `double`, or a vector of doubles
/// that holds the same bin of several spectra side by side.
template <typename T>
[[gnu::always_inline]] inline void sumOfBins(std::span<const T> spectrum, std::size_t first, std::size_t end, T& sum) {
    sum = T{};
    for (std::size_t k = first; k < end && k < spectrum.size(); ++k) {
        sum += spectrum[k];
    }
}

}  // namespace Zantrix::Audio
