#pragma once

#include "shell/Diagnostics.h"
#include "shell/InputNames.h"

#include <string>
#include <vector>

namespace Zantrix::Cli {

/// For commands that need all their inputs at once: appends the files of all that the arguments name.
///
/// @return false when a list cannot be read or names something that is no file; that was reported, and all others were
///         appended
bool appendInputs(const InputArguments& arguments, std::vector<std::string>& files, Diagnostics& diagnostics);

/// Appends the files of an audio set (see `Audio::AudioSetParser`) to `files`, in the order of the list.
///
/// @return false when the list cannot be read or names something that is no file; that was reported, and all other
///         entries were appended
bool appendAudioSet(const std::string& list, std::vector<std::string>& files, Diagnostics& diagnostics);

}  // namespace Zantrix::Cli
