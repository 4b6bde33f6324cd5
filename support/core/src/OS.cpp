#include <murvane/core/OS.h>
#include <murvane/core/Text.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace Zantrix::OS {

bool isPathRelative(const std::string& name) {
    if (name.empty()) {
        return true;
    }
    const bool rooted = name[0] == '/' || name[0] == '\\';
    const bool onDrive = name.size() > 1 && name[1] == ':' && Text::isLetter(name[0]);
    return !rooted && !onDrive;
}

bool getCanonicalPath(const char* path, std::string& out) {
    if (path == nullptr || *path == '\0') {
        return false;
    }
    std::string slashed(path);
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    std::error_code error;
    std::filesystem::path canonical = std::filesystem::weakly_canonical(slashed, error);
    if (error) {
        return false;
    }
    // A relative name none of whose folders exists comes back relative.
    if (canonical.is_relative()) {
        canonical = std::filesystem::absolute(canonical, error).lexically_normal();
        if (error) {
            return false;
        }
    }
    // A folder that does not exist keeps the separator behind it.
    if (!canonical.has_filename() && canonical != canonical.root_path()) {
        canonical = canonical.parent_path();
    }
    out = canonical.string();
    return true;
}

std::string stripPathAndExtension(const std::string& path) {
    const std::size_t folderEnd = path.find_last_of("/\\");
    const std::string name = folderEnd == std::string::npos ? path : path.substr(folderEnd + 1);
    const std::size_t extension = name.rfind('.');
    return extension == std::string::npos ? name : name.substr(0, extension);
}

}  // namespace Zantrix::OS
