#include <murvane/audio/batch/AudioSetParser.h>
#include <murvane/core/Logging.h>
#include <murvane/core/OS.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Zantrix::Audio {

namespace {

constexpr const char* c_szSource = "AudioSetParser";
constexpr const char* c_szDataFolderVariable = "ZANTRIX_CPA_DATA";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioSetParser");
    return logger;
}

// The folder part of the list's name, separator included; "" when it has none.
std::string folderOf(const std::string& fileName) {
    const std::size_t separator = fileName.find_last_of("/\\:");
    return separator == std::string::npos || separator == 0 ? "" : fileName.substr(0, separator + 1);
}

// Not by opening: that would wait for the writer of a pipe, or take a reader away from it.
bool doesFileExist(const char* name) {
    std::error_code ignored;
    return ::faccessat(AT_FDCWD, name, R_OK, AT_EACCESS) == 0 && !std::filesystem::is_directory(name, ignored);
}

// Looks for one candidate of a relative name; `out` stays empty when there is no such file. False when it is no path at
// all.
bool findRelative(const std::string& candidate, const char* name, std::string& out) {
    std::string path;
    if (!OS::getCanonicalPath(candidate.c_str(), path)) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Error in filename ", name, ". File will be skipped.");
        return false;
    }
    logger().log(LogLevel::Debug, c_szSource, __LINE__, "Trying absolute path: ", path);
    if (doesFileExist(path.c_str())) {
        out = path;
    }
    return true;
}

}  // namespace

bool AudioSetParser::setAudioSetFilename(const char* fileName) {
    const TraceScope scope(logger(), "AudioSetParser::setAudioSetFilename", c_szSource, __LINE__);

    const std::string name = fileName == nullptr ? "" : fileName;
    std::ifstream file(name);
    StringVector files;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') {
            files.push_back(std::move(line));
        }
    }
    // A folder opens, but cannot be read; half a list is none.
    if (!file.is_open() || file.bad()) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Could not open file ", name,
                     " containing file set to parse");
        return false;
    }
    m_strAudioSetFilename = name;
    m_vFiles.insert(m_vFiles.end(), std::make_move_iterator(files.begin()), std::make_move_iterator(files.end()));
    return true;
}

bool AudioSetParser::gotoFirstAudioFile() {
    const TraceScope scope(logger(), "AudioSetParser::gotoFirstAudioFile", c_szSource, __LINE__);

    m_uiCurrent = 0;
    if (m_vFiles.empty()) {
        return false;
    }
    m_bFirst = true;
    return true;
}

bool AudioSetParser::getNextAudioFile(std::string& out) {
    const TraceScope scope(logger(), "AudioSetParser::getNextAudioFile", c_szSource, __LINE__);

    goToNextValidFilename();
    if (m_uiCurrent >= m_vFiles.size()) {
        out.clear();
        return false;
    }
    out = m_strFullFilename;
    return true;
}

bool AudioSetParser::atEnd() const {
    const TraceScope scope(logger(), "AudioSetParser::atEnd", c_szSource, __LINE__);

    return m_uiCurrent + 1 >= m_vFiles.size();
}

void AudioSetParser::goToNextValidFilename() {
    if (m_uiCurrent >= m_vFiles.size()) {
        return;
    }
    if (m_bFirst) {
        m_bFirst = false;
    } else {
        ++m_uiCurrent;
    }
    while (m_uiCurrent < m_vFiles.size() && getFullFilename(m_vFiles[m_uiCurrent].c_str()) == nullptr) {
        ++m_uiCurrent;
    }
}

// The path of an entry, or null when it is to be skipped.
const char* AudioSetParser::getFullFilename(const char* name) {
    return findAudioFile(m_strAudioSetFilename.c_str(), name, m_strFullFilename) ? m_strFullFilename.c_str() : nullptr;
}

bool AudioSetParser::findAudioFile(const char* listName, const char* entry, std::string& out) {
    out.clear();
    listName = listName == nullptr ? "" : listName;
    entry = entry == nullptr ? "" : entry;
    const auto skip = [&](const char* pathKind) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Could not open  file ", entry, " (", pathKind,
                     " path detected). File will be skipped.");
        return false;
    };
    if (!OS::isPathRelative(entry)) {
        if (!doesFileExist(entry)) {
            return skip("absolute");
        }
        out = entry;
        return true;
    }
    if (!findRelative(folderOf(listName) + entry, entry, out)) {
        return false;
    }
    if (out.empty()) {
        const char* dataFolder = std::getenv(c_szDataFolderVariable);
        if (dataFolder == nullptr) {
            return skip("relative");
        }
        // Either separator is understood; this one is what records have always shown.
        if (!findRelative(std::string(dataFolder) + "\\" + entry, entry, out)) {
            return false;
        }
        if (out.empty()) {
            return skip("relative");
        }
    }
    return true;
}

}  // namespace Zantrix::Audio
