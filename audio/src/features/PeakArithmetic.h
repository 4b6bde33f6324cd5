#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

/// The search for the highest peaks of a vector.
namespace Zantrix::Audio {

/// Erases what is left of a lobe whose highest element, already erased, stood at `peak` with the value `height`.
///
/// A walk goes on while values fall, and steps over a single rising one when the next lies below the value before the
/// rise. It takes the place beyond either end of the vector for one that does not.
inline void eraseLobe(std::span<double> values, std::size_t peak, double height) {
    double previous = height;
    for (std::size_t i = peak + 1; i < values.size(); ++i) {
        const double current = values[i];
        if (previous <= current && (i + 1 == values.size() || previous <= values[i + 1])) {
            break;
        }
        values[i] = 0.0;
        previous = current;
    }
    previous = height;
    for (std::size_t i = peak; i-- > 0;) {
        const double current = values[i];
        if (previous <= current && (i == 0 || previous <= values[i - 1])) {
            break;
        }
        values[i] = 0.0;
        previous = current;
        if (i == 1) {
            // Bin 0 of a spectrum goes with bin 1, whatever its height: with a Hann window both hold what leaks from a
            // constant offset, which must not come out as a peak of its own.
            values[0] = 0.0;
            break;
        }
    }
}

/// Finds the highest peaks, one after the other: the first of the largest elements, whose lobe is then erased, so that
/// the next one belongs to another lobe. Where nothing is left, a peak of height 0.0 at index 0.
///
/// @param values     absolute values, at least one; erased as the search goes on
/// @param heights    one per peak wanted, overwritten
/// @param positions  as many, overwritten with indices into `values`
inline void findPeaks(std::span<double> values, std::span<double> heights, std::span<std::size_t> positions) {
    for (std::size_t p = 0; p < heights.size(); ++p) {
        const auto highest = std::max_element(values.begin(), values.end());
        heights[p] = *highest;
        positions[p] = static_cast<std::size_t>(highest - values.begin());
        *highest = 0.0;
        eraseLobe(values, positions[p], heights[p]);
    }
}

/// The natural logarithm of an index; index 0, which has none, counts as 1e-6.
inline double logOfPosition(std::size_t position) {
    return std::log(std::max(static_cast<double>(position), 1e-6));
}

}  // namespace Zantrix::Audio
