#pragma once

#include <murvane/math/DoubleVector.h>

#include <cstddef>

namespace Zantrix::Math::Xpr {

/// Combines two vectors element by element. A vector of one goes with every element of the other, so that one with an
/// empty vector gives an empty vector.
///
/// @param out  replaced by the result; neither `a` nor `b`; unchanged on failure
/// @return false when the sizes differ and neither is 1
template <typename Operation>
bool combine(const DoubleVector& a, const DoubleVector& b, DoubleVector& out, Operation operation) {
    if (a.size() == b.size()) {
        out.resize(a.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            out[i] = operation(a[i], b[i]);
        }
    } else if (b.size() == 1) {
        out.resize(a.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            out[i] = operation(a[i], b.front());
        }
    } else if (a.size() == 1) {
        out.resize(b.size());
        for (std::size_t i = 0; i < b.size(); ++i) {
            out[i] = operation(a.front(), b[i]);
        }
    } else {
        return false;
    }
    return true;
}

}  // namespace Zantrix::Math::Xpr
