#include "shell/OutputPlaces.h"

#include "Command.h"
#include "shell/AudioKind.h"
#include "shell/Output.h"

#include <filesystem>
#include <sys/stat.h>
#include <utility>

namespace Zantrix::Cli {

void OutputPlaces::add(const std::string& path) {
    if (!path.empty() && path != c_szStandardOutput) {
        add({path}, runItself);
        m_ofRun.push_back(path);
    }
}

std::optional<OutputPlaces::Taken> OutputPlaces::add(const std::vector<std::string>& paths, std::size_t owner) {
    std::vector<Place> places;
    for (const std::string& path : paths) {
        places.push_back(locate(path));
        const std::string& key = places.back().key;
        if (key.empty()) {
            continue;
        }
        const auto [taken, isNew] = m_owners.emplace(key, owner);
        if (!isNew) {
            const Taken inTheWay{path, taken->second};
            places.pop_back();
            for (const Place& place : places) {
                m_owners.erase(place.key);
            }
            if (inTheWay.owner == runItself) {
                throw UsageError("two outputs would go to " + path);
            }
            return inTheWay;
        }
    }
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (places[i].file) {
            m_files.emplace(*places[i].file, paths[i]);
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
        throw UsageError("the output " + found->second + " would replace the input " + input);
    }
}

void OutputPlaces::refuseToReplaceAudio() const {
    for (const std::string& output : m_ofRun) {
        if (const char* kind = audioKindOfFile(output)) {
            throw UsageError("the output " + output + " would replace a recording: that file begins like " + kind +
                             " audio; remove it first if that is meant");
        }
    }
}

OutputPlaces::Place OutputPlaces::locate(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return {keyOf(path), std::nullopt};
    }
    std::string target = path;
    if (S_ISLNK(status.st_mode)) {
        namespace fs = std::filesystem;
        std::error_code ignored;
        if (::stat(path.c_str(), &status) != 0) {
            return {keyOf(fs::path(path).parent_path() / fs::read_symlink(path, ignored)), std::nullopt};
        }
        target = fs::canonical(path, ignored).string();
    }
    return S_ISREG(status.st_mode) ? Place{keyOf(target), FileId{status.st_dev, status.st_ino}} : Place{};
}

// Empty where there is no folder: nothing can be written there.
std::string OutputPlaces::keyOf(const std::string& path) {
    const std::size_t nameStart = path.rfind('/') + 1;  // 0 when there is none
    const std::string folder = nameStart == 0 ? "." : path.substr(0, nameStart);
    if (folder != m_strFolder) {
        struct stat status {};
        m_strFolder = folder;
        m_folder = ::stat(folder.c_str(), &status) == 0 ? FileId{status.st_dev, status.st_ino} : FileId{};
    }
    return m_folder == FileId{}
               ? ""
               : std::string(reinterpret_cast<const char*>(&m_folder), sizeof m_folder) + path.substr(nameStart);
}

}  // namespace Zantrix::Cli
