#include "shell/AudioSet.h"

#include <murvane/audio/batch/AudioSetParser.h>

#include <cstddef>

namespace Zantrix::Cli {

bool appendAudioSet(const std::string& list, std::vector<std::string>& files, Diagnostics& diagnostics) {
    diagnostics.beginInput(list);
    Audio::AudioSetParser parser;
    const bool isRead = parser.setAudioSetFilename(list.c_str());
    std::size_t found = 0;
    if (isRead && parser.gotoFirstAudioFile()) {
        for (std::string file; parser.getNextAudioFile(file); ++found) {
            files.push_back(file);
        }
    }
    diagnostics.endInput();
    return isRead && found == parser.getNbOfEntries();
}

}  // namespace Zantrix::Cli
