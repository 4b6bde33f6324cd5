#pragma once

#include "PhaseList.h"

#include <optional>
#include <string>
#include <vector>

namespace CallProgress {

/// Tells the phases of a recording, one after the other without a gap: the signals of Signals.h by name, "unknown tone"
/// for a tone of the table without its cadence, "speech", "noise" for any other sound, and "silence".
///
/// @param path   a mono recording at 8000 Hz
/// @param error  on failure, what is wrong with the recording
/// @return nothing when it cannot be read, has another rate, or is shorter than a window
std::optional<std::vector<Phase>> findPhases(const std::string& path, std::string& error);

}  // namespace CallProgress
