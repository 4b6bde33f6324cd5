#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace Zantrix::Math {

/// A growable vector of `double`: every buffer of samples, window, spectrum and feature output is one.
///
/// It is a `std::vector<double>` with the few operations of signal arithmetic. It adds no data, so the base's
/// missing virtual destructor does no harm. `clear()` keeps the storage, which is what makes a computation free of
/// allocations after its first round.
class DoubleVector : public std::vector<double> {
public:
    using std::vector<double>::vector;
    DoubleVector() = default;

    /// Appends the range [first, last), which must not be part of this vector.
    template <typename Iterator>
    void append(Iterator first, Iterator last) {
        insert(end(), first, last);
    }
    void append(const DoubleVector& values) { append(values.begin(), values.end()); }

    /// The arithmetic mean, summed in order; 0.0 when empty.
    double average() const {
        return empty() ? 0.0 : std::accumulate(begin(), end(), 0.0) / static_cast<double>(size());
    }

    /// The first of the largest elements; `end()` when empty.
    const_iterator max_element() const { return std::max_element(begin(), end()); }
    iterator max_element() { return std::max_element(begin(), end()); }

    /// The first of the smallest and the last of the largest elements; `end()` twice when empty.
    std::pair<const_iterator, const_iterator> minmax_element() const { return std::minmax_element(begin(), end()); }

    /// Replaces every element by its absolute value.
    DoubleVector& absoluteValue() {
        for (double& value : *this) {
            value = std::fabs(value);
        }
        return *this;
    }

    DoubleVector& operator*=(double factor) {
        for (double& value : *this) {
            value *= factor;
        }
        return *this;
    }

    DoubleVector& operator/=(double divisor) {
        for (double& value : *this) {
            value /= divisor;
        }
        return *this;
    }
};

}  // namespace Zantrix::Math
