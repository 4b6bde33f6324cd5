/// Tells the phases of a call as a North American caller hears it: dial tone, dialled digits, ringback, busy, special
/// information tones, fax, speech, silence.
///
///     call_progress CALL.wav [--phases PHASES.csv] [--annotated COPY.wav]
///
/// Prints the phases it finds, with their times in seconds; beside the true ones, if a list of them is given. Writes a
/// copy of the call with the phases that are not silence as annotations. Exit status: 0 done, 1 a file could not be
/// read or written, 2 wrong usage. README.md, beside this file, tells how it works and where it ends.

#include "CallProgress.h"
#include "Windows.h"

#include <murvane/audio.h>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <filesystem>
#include <iostream>
#include <string>

namespace {

int complain(const std::string& path, const std::string& message) {
    std::cerr << "call_progress: " << path << ": " << message << '\n';
    return 1;
}

// The annotations that the call has give way to the phases.
bool annotate(const std::string& path, const std::string& copy, const std::vector<CallProgress::Phase>& phases,
              std::string& error) {
    Zantrix::Audio::AnnotatedFile file;
    if (!file.loadFile(path)) {
        error = file.getError();
        return false;
    }
    file.m_vAnnotations.clear();
    for (const CallProgress::Phase& phase : phases) {
        if (phase.name != "silence") {
            auto* pAnnotation = new Zantrix::Audio::AnnotationImpl;
            file.m_vAnnotations.emplace_back(pAnnotation);
            pAnnotation->setLabel(phase.name.c_str());
            pAnnotation->setStartTime(phase.start);
            pAnnotation->setStopTime(phase.stop);
        }
    }
    if (!file.saveFile(copy)) {
        error = file.getError();
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string call;
    std::string list;
    std::string copy;
    bool isUnderstood = true;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        std::string& value = word == "--phases" ? list : word == "--annotated" ? copy : call;
        const bool isOption = &value != &call;
        isUnderstood = isUnderstood && value.empty() && (isOption ? i + 1 < argc : !word.starts_with("--"));
        value = isOption && i + 1 < argc ? argv[++i] : word;
    }
    if (!isUnderstood || call.empty()) {
        std::cerr << "usage: call_progress CALL.wav [--phases PHASES.csv] [--annotated COPY.wav]\n";
        return 2;
    }
    // The library reports its errors to log4cplus as well; here they are printed.
    const log4cplus::Initializer logging;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);

    std::error_code ignored;
    if (!copy.empty() && std::filesystem::equivalent(call, copy, ignored)) {
        return complain(copy, "is the call itself, which is left as it is");
    }
    std::string error;
    const auto phases = CallProgress::findPhases(call, error);
    if (!phases) {
        return complain(call, error);
    }
    if (list.empty()) {
        CallProgress::printPhases(*phases);
    } else if (const auto truth = CallProgress::readPhases(list)) {
        CallProgress::printBeside(*truth, *phases, CallProgress::c_iWindowMs / 1000.0);
    } else {
        return complain(list, "is no list of phases");
    }
    if (!copy.empty() && !annotate(call, copy, *phases, error)) {
        return complain(copy, "cannot be written: " + error);
    }
    return 0;
}
