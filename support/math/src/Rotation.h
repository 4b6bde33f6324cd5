#pragma once

#include <cstddef>

namespace Zantrix::Math {

/// A point of the unit circle.
struct Rotation {
    double cosine;
    double sine;
};

/// Cosine and sine of 2 pi k / n, each as near as a `double` can be, for k < n.
Rotation rotationBy(std::size_t k, std::size_t n);

}  // namespace Zantrix::Math
