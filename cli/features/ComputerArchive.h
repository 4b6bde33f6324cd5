#pragma once

#include <string>
#include <vector>

/// Feature computers kept in files, as programs archive them through a pointer to their base.
namespace Zantrix::Cli {

/// The names of the features of an archived audio feature computer. Text, binary and XML archives are told apart by how
/// they begin.
///
/// @throw UsageError  naming the file and what is wrong with it
std::vector<std::string> loadComputer(const std::string& path);

/// An XML archive of an audio feature computer of these features, which `loadComputer` and programs load.
std::string archiveComputer(const std::vector<std::string>& features);

}  // namespace Zantrix::Cli
