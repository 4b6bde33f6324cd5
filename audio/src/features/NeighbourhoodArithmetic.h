#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

namespace Zantrix::Audio {

/// Where the three values around the first of the largest ones begin; at either end, the three values there.
///
/// @param values  at least three
inline std::size_t startOfNeighbourhood(std::span<const double> values) {
    const auto largest = std::max_element(values.begin(), values.end());
    const std::size_t position = static_cast<std::size_t>(largest - values.begin());
    return position == 0 ? 0 : std::min(position - 1, values.size() - 3);
}

}  // namespace Zantrix::Audio
