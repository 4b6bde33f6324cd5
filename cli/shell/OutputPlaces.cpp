#include "shell/OutputPlaces.h"

#include "Command.h"

#include <algorithm>
#include <sys/stat.h>

namespace Zantrix::Cli {

void OutputPlaces::add(const std::string& path) {
    if (!path.empty()) {
        add({path}, runItself);
    }
}

std::optional<OutputPlaces::Taken> OutputPlaces::add(const std::vector<std::string>& paths, std::size_t owner) {
    std::vector<Place> places;
    for (const std::string& path : paths) {
        places.push_back(locate(path));
        const bool isTwice = std::count(places.begin(), places.end(), places.back()) > 1;
        const auto holder = isTwice ? std::optional(owner) : holderOf(places.back());
        if (holder && places.back().counts()) {
            if (*holder == runItself) {
                throw UsageError("two outputs would go to " + path);
            }
            return Taken{path, *holder};
        }
    }
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (places[i].file) {
            m_files.emplace(*places[i].file, Taken{paths[i], owner});
        } else if (places[i].counts()) {
            m_names.emplace(std::move(places[i].name), owner);
        }
    }
    return std::nullopt;
}

void OutputPlaces::refuseToReplace(const std::string& input) const {
    struct stat status {};
    if (!replaceAny() || ::stat(input.c_str(), &status) != 0) {
        return;
    }
    if (const auto found = m_files.find({status.st_dev, status.st_ino}); found != m_files.end()) {
        throw UsageError("the output " + found->second.path + " would replace the input " + input);
    }
}

OutputPlaces::Place OutputPlaces::locate(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        return S_ISREG(status.st_mode) ? Place{FileId{status.st_dev, status.st_ino}, {}} : Place{};
    }
    const std::size_t nameStart = path.rfind('/') + 1;  // 0 when there is none
    const std::string folder = nameStart == 0 ? "." : path.substr(0, nameStart);
    if (folder != m_strFolder) {
        m_strFolder = folder;
        const bool isThere = ::stat(folder.c_str(), &status) == 0;
        m_folder = isThere ? FileId{status.st_dev, status.st_ino} : FileId{};
    }
    // Nothing can be written where there is no folder.
    return m_folder == FileId{}
               ? Place{}
               : Place{std::nullopt,
                       std::string(reinterpret_cast<const char*>(&m_folder), sizeof m_folder) + path.substr(nameStart)};
}

std::optional<std::size_t> OutputPlaces::holderOf(const Place& place) const {
    if (place.file) {
        const auto found = m_files.find(*place.file);
        return found == m_files.end() ? std::nullopt : std::optional(found->second.owner);
    }
    const auto found = m_names.find(place.name);
    return found == m_names.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace Zantrix::Cli
