#pragma once

#include <string>
#include <vector>

namespace Zantrix {

/// A list of strings.
using StringVector = std::vector<std::string>;

}  // namespace Zantrix
