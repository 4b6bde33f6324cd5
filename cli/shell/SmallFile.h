#pragma once

#include <string>

/// Small files that options name.
namespace Zantrix::Cli {

/// All bytes of a file of at most 16 MiB.
///
/// @throw UsageError  naming the file and why it cannot be read
std::string readSmallFile(const std::string& path);

/// Replaces a file, which appears only when it is whole.
///
/// @return why it could not be, as a message; empty when it was
std::string writeSmallFile(const std::string& path, const std::string& bytes);

}  // namespace Zantrix::Cli
