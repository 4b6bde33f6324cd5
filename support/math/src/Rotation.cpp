#include "Rotation.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace Zantrix::Math {

Rotation rotationBy(std::size_t k, std::size_t n) {
    // In eighths of a turn over n, so that every reflection into the first octant is exact and points that mirror
    // each other get the same digits.
    std::size_t eighths = 8 * k;
    const bool lowerHalf = eighths > 4 * n;
    if (lowerHalf) {
        eighths = 8 * n - eighths;
    }
    const bool leftHalf = eighths > 2 * n;
    if (leftHalf) {
        eighths = 4 * n - eighths;
    }
    const bool nearVertical = eighths > n;
    if (nearVertical) {
        eighths = 2 * n - eighths;
    }
    const long double angle =
        std::numbers::pi_v<long double> / 4 * static_cast<long double>(eighths) / static_cast<long double>(n);
    auto cosine = static_cast<double>(std::cos(angle));
    auto sine = static_cast<double>(std::sin(angle));
    if (nearVertical) {
        std::swap(cosine, sine);
    }
    return {leftHalf ? -cosine : cosine, lowerHalf ? -sine : sine};
}

}  // namespace Zantrix::Math
