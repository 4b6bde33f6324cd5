#pragma once

#include <string>

namespace Zantrix::Cli {

/// Copies a file to FILE.bak, or to FILE.bak.1, FILE.bak.2 ... where that exists: nothing is overwritten. The copy is
/// on disk when this returns, with the mode and the time of the file.
///
/// @param name  replaced by the name of the copy
/// @return why there is none, in words; empty when there is
std::string backUp(const std::string& path, std::string& name);

}  // namespace Zantrix::Cli
