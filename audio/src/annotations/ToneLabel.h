#pragma once

#include <murvane/core/BoostRegex.h>
#include <murvane/core/Logging.h>

#include <stdexcept>

namespace Zantrix::Audio {

/// Whether a whole label matches a tone type's expression; null does not. An error of the expression is reported on the
/// type's logger and counts as no match.
///
/// @param regex     the expression, for that report
/// @param compiled  gives the `BoostRegex`; what it throws is an error of the expression, too
template <typename Compiled>
bool matchesToneLabel(const char* label, const char* regex, Compiled compiled, const Logger& logger,
                      const char* sourceName) {
    try {
        return label != nullptr && compiled().matches(label);
    } catch (const std::runtime_error&) {
        // "in with" is how filters match it.
        logger.log(LogLevel::Error, sourceName, __LINE__, "Unexpected std::runtime exception caught in with regex: \"",
                   regex, '"');
        return false;
    }
}

}  // namespace Zantrix::Audio
