#pragma once

#include <murvane/core/BoostRegex.h>
#include <murvane/core/Logging.h>

#include <stdexcept>

namespace Zantrix::Audio {

/// Whether a whole label matches a tone type's expression; null does not. An error of the expression is reported on the
/// type's logger and counts as no match.
inline bool matchesToneLabel(const char* label, const char* regex, const Logger& logger, const char* sourceName) {
    try {
        return label != nullptr && BoostRegex(regex).matches(label);
    } catch (const std::runtime_error&) {
        logger.log(LogLevel::Error, sourceName, __LINE__, "Unexpected std::runtime exception caught in with regex: \"",
                   regex, '"');
        return false;
    }
}

}  // namespace Zantrix::Audio
