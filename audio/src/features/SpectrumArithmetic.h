#pragma once

#include <murvane/math/PowerOfTwoTransform.h>

#include <cstddef>

/// The power spectrum behind the spectrum features, over the same value types as the transform it stands on: `double`,
/// or a vector that holds the same place of several windows side by side, each lane equal to the bit to what `double`
/// gives.
namespace Zantrix::Audio {

/// The powers of a window of n = tables.size samples (n >= 2), in place.
///
/// @param values  in: n weighted samples, as n/2 complex ones (even, odd) in bit-reversed order; out: the powers
///                re^2 + im^2 of the terms 0 .. n/2-1 in the first n/2 places, of no meaning behind them
/// @param total   out: their sum, taken in increasing order of the terms
template <typename T>
[[gnu::always_inline]] inline void powersOfBitReversed(T* values, const Math::TransformTables& tables, T& total) {
    using Point = Math::TransformPoint<T>;
    Math::transformBitReversed(values, tables);

    const T constantTerm = values[0] + values[1];
    values[0] = constantTerm * constantTerm;
    total = values[0];
    const std::size_t binCount = tables.size / 2;
    if (binCount == 1) {
        return;
    }
    // The separation yields terms k and n/2-k together. The power of k goes to its place at once, since everything up
    // to there has been read; that of n/2-k waits in the place of the term it came from, until the low half is done.
    const double* rotation = tables.separation.data();
    T* low = values + 2;
    T* high = values + 2 * (binCount - 1);
    T* power = values + 1;
    for (; low < high; low += 2, high -= 2, ++power, rotation += Math::c_uiRotationStride) {
        Point term = Point::load(low);
        Point mirror = Point::load(high);
        Math::separatePair(term, mirror, rotation);
        term.power(*power);
        total += *power;
        mirror.power(*high);
    }
    Point::load(low).power(*low);
    for (; power != values + binCount; ++power, low += 2) {
        *power = *low;
        total += *power;
    }
}

/// What the powers of a window are multiplied by so that they sum to 1: the reciprocal of their total, or 1 for
/// silence, lane by lane.
template <typename T>
[[gnu::always_inline]] inline void normalisingFactor(const T& total, T& factor) {
    const T one = T{} + 1.0;
    factor = total == 0.0 ? one : one / total;
}

}  // namespace Zantrix::Audio
