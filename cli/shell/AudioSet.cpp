#include "shell/AudioSet.h"

#include "shell/InputNames.h"

namespace Zantrix::Cli {

bool appendInputs(const InputArguments& arguments, std::vector<std::string>& files, Diagnostics& diagnostics) {
    InputNames names;
    bool isWhole = names.gather(arguments, diagnostics);
    for (std::size_t i = 0; i < names.size(); ++i) {
        diagnostics.beginInput(names.teller(i));
        if (const auto file = names.find(i, diagnostics)) {
            files.push_back(*file);
        } else {
            isWhole = false;
        }
        diagnostics.endInput();
    }
    return isWhole;
}

bool appendAudioSet(const std::string& list, std::vector<std::string>& files, Diagnostics& diagnostics) {
    InputArguments arguments;
    arguments.audioSet = list;
    return appendInputs(arguments, files, diagnostics);
}

}  // namespace Zantrix::Cli
