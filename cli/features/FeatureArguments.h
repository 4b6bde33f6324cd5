#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Gives each feature name an option of its own: "--feature A B call.wav" becomes "--feature=A --feature=B call.wav".
///
/// What follows --expr is its formula, even if it begins with "-": "--expr -x" becomes "--expr=-x".
///
/// The first argument after --feature is a name whatever it looks like. Those behind it are names until the first
/// option, or the first that is not known as a name and is an existing file, "-", or contains "." or "/". Nothing
/// behind
/// "--" is touched.
std::vector<std::string> expandFeatureArguments(const std::vector<std::string>& arguments,
                                                const std::function<bool(const std::string&)>& isKnownName);

}  // namespace Zantrix::Cli
