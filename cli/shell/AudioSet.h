#pragma once

#include "shell/Diagnostics.h"

#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Appends the files of an audio set (see `Audio::AudioSetParser`) to `files`, in the order of the list.
///
/// @return false when the list cannot be read or names something that is no file; that was reported, and all other
///         entries were appended
bool appendAudioSet(const std::string& list, std::vector<std::string>& files, Diagnostics& diagnostics);

}  // namespace Zantrix::Cli
