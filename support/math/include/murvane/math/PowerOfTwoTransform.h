#pragma once

#include <murvane/core/Export.h>

#include <bit>
#include <cstddef>
#include <vector>

/// The arithmetic of the real Fourier transform of n = 2^m values.
///
/// The n values are taken as h = n/2 complex ones, (even, odd); these go through a complex transform of h points; a
/// last step separates the two real transforms that it holds interleaved (Cooley and Tukey's decimation in time with
/// radix 4, begun by one pass of radix 2, 4 or 8).
///
/// Everything is a template over the value type T: `double`, or a vector type of the compiler (GCC's vector
/// extension) that holds the same place of several windows side by side. Each lane of a vector gets the very sums
/// and products, in the same order, that a `double` gets, so a lane's results equal the scalar ones to the bit
/// (given -ffp-contract=off, and apart from the payload and sign of a NaN).
///
/// A transform is the steps
///
///     bitReverse -> transformBitReversed -> separateRealTerms
///
/// over n values that all of them take as pointer and tables. A caller that brings its values in one by one stores
/// them in bit-reversed order at once and leaves out the first step.
///
/// All functions are always inlined: a caller compiled for a wider instruction set gets them in that set.
namespace Zantrix::Math {

/// What the transform of one size needs to know; immutable.
///
/// A rotation by -a is stored as four numbers (c, c, s, -s), c = cos a, s = sin a, so that one product and one
/// swapped product rotate a complex number held in a register of two.
struct TransformTables {
    /// n, the number of real values.
    std::size_t size;
    /// The place of each of the n/2 complex values in bit-reversed order.
    std::vector<std::size_t> bitReversed;
    /// Pairs of places (one after the other) to exchange for that order.
    std::vector<std::size_t> swaps;
    /// Of each radix-4 pass in turn, that joins transforms of L points: for j = 1 .. L-1 the rotations by
    /// 2 pi j m / (4 L) for m = 1, 2, 3.
    std::vector<double> passes;
    /// For k = 1 .. n/4-1, the rotation by 2 pi k / n, times -i/2.
    std::vector<double> separation;
};

/// The tables of size n, built at the first request and kept for the life of the process. Safe from any thread;
/// later requests cost an atomic load.
///
/// @param n  a power of two
/// @throws std::bad_alloc if there is no memory for them; nothing is kept then
MURVANE_API const TransformTables& transformTables(std::size_t n);

/// How many points each transform has that the first pass makes of `points`, a power of two, in all: as many as leave
/// only passes of radix 4. 1 where there is nothing to do.
[[gnu::always_inline]] constexpr std::size_t firstPassLength(std::size_t points) {
    const int levels = std::countr_zero(points);
    if (levels < 2) {
        return points;
    }
    return levels % 2 == 0 ? 4 : 8;
}

/// How many numbers a stored rotation has.
inline constexpr std::size_t c_uiRotationStride = 4;

/// A complex value of T, or several side by side.
template <typename T>
struct TransformPoint {
    T re;
    T im;

    [[gnu::always_inline]] static TransformPoint load(const T* from) { return {from[0], from[1]}; }
    [[gnu::always_inline]] void store(T* to) const {
        to[0] = re;
        to[1] = im;
    }
    [[gnu::always_inline]] TransformPoint operator+(const TransformPoint& other) const {
        return {re + other.re, im + other.im};
    }
    [[gnu::always_inline]] TransformPoint operator-(const TransformPoint& other) const {
        return {re - other.re, im - other.im};
    }
    [[gnu::always_inline]] TransformPoint scaled(double factor) const { return {re * factor, im * factor}; }
    [[gnu::always_inline]] TransformPoint rotated(const double* rotation) const {
        return {re * rotation[0] + im * rotation[2], im * rotation[0] - re * rotation[2]};
    }
    [[gnu::always_inline]] TransformPoint timesMinusI() const { return {im, -re}; }
    [[gnu::always_inline]] TransformPoint conjugate() const { return {re, -im}; }
    /// The squared magnitude; by reference, since returning a wide vector would be a matter of the caller's
    /// instruction set.
    [[gnu::always_inline]] void power(T& out) const { out = re * re + im * im; }
};

/// One complex `double`: held in a register of two, which halves the work of a single window.
template <>
struct TransformPoint<double> {
    typedef double Pair __attribute__((vector_size(16)));
    typedef long long PairBits __attribute__((vector_size(16)));
    // A typedef, for in an alias declaration clang drops the alignment.
    typedef double UnalignedPair __attribute__((vector_size(16), aligned(8)));

    Pair value;

    [[gnu::always_inline]] static Pair pairAt(const double* from) {
        return *reinterpret_cast<const UnalignedPair*>(from);
    }
    [[gnu::always_inline]] static Pair swapped(Pair pair) { return __builtin_shufflevector(pair, pair, 1, 0); }
    [[gnu::always_inline]] static Pair secondNegated(Pair pair) {
        const Pair signs = {0.0, -0.0};
        return reinterpret_cast<Pair>(reinterpret_cast<PairBits>(pair) ^ reinterpret_cast<PairBits>(signs));
    }

    [[gnu::always_inline]] static TransformPoint load(const double* from) { return {pairAt(from)}; }
    [[gnu::always_inline]] void store(double* to) const { *reinterpret_cast<UnalignedPair*>(to) = value; }
    [[gnu::always_inline]] TransformPoint operator+(const TransformPoint& other) const { return {value + other.value}; }
    [[gnu::always_inline]] TransformPoint operator-(const TransformPoint& other) const { return {value - other.value}; }
    [[gnu::always_inline]] TransformPoint scaled(double factor) const { return {value * factor}; }
    [[gnu::always_inline]] TransformPoint rotated(const double* rotation) const {
        return {value * pairAt(rotation) + swapped(value) * pairAt(rotation + 2)};
    }
    [[gnu::always_inline]] TransformPoint timesMinusI() const { return {secondNegated(swapped(value))}; }
    [[gnu::always_inline]] TransformPoint conjugate() const { return {secondNegated(value)}; }
    [[gnu::always_inline]] void power(double& out) const {
        const Pair squares = value * value;
        out = squares[0] + squares[1];
    }
};

/// The transform of the four points z[0] .. z[3], in place.
template <typename T>
[[gnu::always_inline]] inline void transformFour(TransformPoint<T> (&z)[4]) {
    const TransformPoint<T> evenSum = z[0] + z[2];
    const TransformPoint<T> evenDifference = z[0] - z[2];
    const TransformPoint<T> oddSum = z[1] + z[3];
    const TransformPoint<T> oddDifference = (z[1] - z[3]).timesMinusI();
    z[0] = evenSum + oddSum;
    z[1] = evenDifference + oddDifference;
    z[2] = evenSum - oddSum;
    z[3] = evenDifference - oddDifference;
}

/// The first pass, no rotation but by eighths of a turn: transforms of 2, 4 or 8 neighbours.
template <typename T>
[[gnu::always_inline]] inline void transformPairs(T* values, std::size_t points) {
    using Point = TransformPoint<T>;
    for (T* v = values; v != values + 2 * points; v += 4) {
        const Point a = Point::load(v);
        const Point b = Point::load(v + 2);
        (a + b).store(v);
        (a - b).store(v + 2);
    }
}

template <typename T>
[[gnu::always_inline]] inline void transformFours(T* values, std::size_t points) {
    using Point = TransformPoint<T>;
    for (T* v = values; v != values + 2 * points; v += 8) {
        Point z[4] = {Point::load(v), Point::load(v + 4), Point::load(v + 2), Point::load(v + 6)};
        transformFour(z);
        z[0].store(v);
        z[1].store(v + 2);
        z[2].store(v + 4);
        z[3].store(v + 6);
    }
}

template <typename T>
[[gnu::always_inline]] inline void transformEights(T* values, std::size_t points) {
    using Point = TransformPoint<T>;
    constexpr double c_dHalfRoot = 0.70710678118654752440;
    for (T* v = values; v != values + 2 * points; v += 16) {
        Point even[4] = {Point::load(v), Point::load(v + 4), Point::load(v + 2), Point::load(v + 6)};
        Point odd[4] = {Point::load(v + 8), Point::load(v + 12), Point::load(v + 10), Point::load(v + 14)};
        transformFour(even);
        transformFour(odd);
        odd[1] = (odd[1] + odd[1].timesMinusI()).scaled(c_dHalfRoot);
        odd[2] = odd[2].timesMinusI();
        odd[3] = (odd[3].timesMinusI() - odd[3]).scaled(c_dHalfRoot);
        for (std::size_t k = 0; k < 4; ++k) {
            (even[k] + odd[k]).store(v + 2 * k);
            (even[k] - odd[k]).store(v + 2 * k + 8);
        }
    }
}

/// Joins four neighbouring transforms of `length` points each, whose inputs were those of remainder 0, 2, 1 and 3.
template <typename T>
[[gnu::always_inline]] inline void joinFour(T* values, std::size_t length, const double* rotations) {
    using Point = TransformPoint<T>;
    T* const v0 = values;
    T* const v2 = v0 + 2 * length;
    T* const v1 = v2 + 2 * length;
    T* const v3 = v1 + 2 * length;
    Point z[4] = {Point::load(v0), Point::load(v1), Point::load(v2), Point::load(v3)};
    for (std::size_t j = 0;;) {
        transformFour(z);
        z[0].store(v0 + j);
        z[1].store(v2 + j);
        z[2].store(v1 + j);
        z[3].store(v3 + j);
        j += 2;
        if (j == 2 * length) {
            return;
        }
        z[0] = Point::load(v0 + j);
        z[1] = Point::load(v1 + j).rotated(rotations);
        z[2] = Point::load(v2 + j).rotated(rotations + c_uiRotationStride);
        z[3] = Point::load(v3 + j).rotated(rotations + 2 * c_uiRotationStride);
        rotations += 3 * c_uiRotationStride;
    }
}

/// Brings n values, as n/2 complex ones, into bit-reversed order.
template <typename T>
[[gnu::always_inline]] inline void bitReverse(T* values, const TransformTables& tables) {
    using Point = TransformPoint<T>;
    const std::size_t* const end = tables.swaps.data() + tables.swaps.size();
    for (const std::size_t* swap = tables.swaps.data(); swap != end; swap += 2) {
        T* const a = values + 2 * swap[0];
        T* const b = values + 2 * swap[1];
        const Point kept = Point::load(a);
        Point::load(b).store(a);
        kept.store(b);
    }
}

/// The complex transform of n/2 points (n >= 2), from bit-reversed into natural order, in place.
template <typename T>
[[gnu::always_inline]] inline void transformBitReversed(T* values, const TransformTables& tables) {
    const std::size_t points = tables.size / 2;
    std::size_t length = firstPassLength(points);
    if (length == 2) {
        transformPairs(values, points);
    } else if (length == 4) {
        transformFours(values, points);
    } else if (length == 8) {
        transformEights(values, points);
    }
    const double* rotations = tables.passes.data();
    for (; length < points; length *= 4) {
        for (std::size_t first = 0; first < points; first += 4 * length) {
            joinFour(values + 2 * first, length, rotations);
        }
        rotations += 3 * c_uiRotationStride * (length - 1);
    }
}

/// Terms k and n/2-k (1 <= k < n/4) of the real transform, from those of the complex one, Z; that of n/2-k comes out
/// conjugated.
///
/// @param term,mirror  in: Z[k] and Z[n/2-k], out: the terms
/// @param rotation     of k, from `TransformTables::separation`
template <typename T>
[[gnu::always_inline]] inline void separatePair(TransformPoint<T>& term, TransformPoint<T>& mirror,
                                                const double* rotation) {
    const TransformPoint<T> conjugated = mirror.conjugate();
    const TransformPoint<T> even = (term + conjugated).scaled(0.5);
    const TransformPoint<T> odd = (term - conjugated).rotated(rotation);
    term = even + odd;
    mirror = even - odd;
}

/// The last step of the transform (n >= 2): from the complex terms to the real transform's, packed as
/// `realFourierTransform` says.
template <typename T>
[[gnu::always_inline]] inline void separateRealTerms(T* values, const TransformTables& tables) {
    using Point = TransformPoint<T>;
    const std::size_t points = tables.size / 2;
    const T even = values[0];
    const T odd = values[1];
    values[0] = even + odd;
    values[1] = even - odd;
    if (points == 1) {
        return;
    }
    const double* rotation = tables.separation.data();
    T* low = values + 2;
    T* high = values + 2 * (points - 1);
    for (; low < high; low += 2, high -= 2, rotation += c_uiRotationStride) {
        Point term = Point::load(low);
        Point mirror = Point::load(high);
        separatePair(term, mirror, rotation);
        term.store(low);
        mirror.conjugate().store(high);
    }
    Point::load(low).conjugate().store(low);
}

}  // namespace Zantrix::Math
