#pragma once

#include <limits>

namespace testkit {

inline constexpr double c_dNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double c_dInfinity = std::numeric_limits<double>::infinity();

}  // namespace testkit
