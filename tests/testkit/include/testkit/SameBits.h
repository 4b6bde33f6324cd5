#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <vector>

namespace testkit {

/// Whether two vectors of doubles are equal to the bit: 0.0 is not -0.0. All that is not a number is one, as its sign
/// and payload mean nothing.
template <class A, class B>
testing::AssertionResult sameBits(const A& a, const B& b) {
    if (a.size() != b.size()) {
        return testing::AssertionFailure() << a.size() << " values, not " << b.size();
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const bool bothNaN = std::isnan(a[i]) && std::isnan(b[i]);
        if (!bothNaN && std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i])) {
            return testing::AssertionFailure()
                   << "value " << i << ": " << std::setprecision(17) << a[i] << " is not " << b[i];
        }
    }
    return testing::AssertionSuccess();
}

/// Whether two vectors are equal byte by byte, the sign and the payload of what is not a number included.
inline bool sameBytes(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

}  // namespace testkit
