#pragma once

#include <murvane/core/Logging.h>

#include <cstdint>
#include <string>

namespace Zantrix::IFF {

/// The one form of all refusals: where, what was being read, and what was wrong with it.
template <typename... Parts>
std::string errorText(std::uint64_t offset, const char* what, const Parts&... parts) {
    return concatenate("offset ", offset, ": reading ", what, ": ", parts...);
}

}  // namespace Zantrix::IFF
