#pragma once

#include <murvane/core/Export.h>

#include <string>

/// Path names, as lists of recordings write them: both "/" and "\" separate folders.
namespace Zantrix::OS {

/// Whether a name depends on the working folder: false for a leading "/" or "\", and for a letter followed by ":".
MURVANE_API bool isPathRelative(const std::string& name);

/// The absolute form of a path: "\" becomes "/", "." and ".." and existing links are resolved. Works for files
/// that do not exist.
///
/// @param path  null or "" cannot be made canonical
/// @param out   the result; unchanged on failure
/// @return false when the path cannot be made canonical
MURVANE_API bool getCanonicalPath(const char* path, std::string& out);

/// The file name without its folders and without its last extension: "dir/call1.wav" gives "call1".
MURVANE_API std::string stripPathAndExtension(const std::string& path);

}  // namespace Zantrix::OS
