#include "Command.h"
#include "evaluate/FileEvaluation.h"
#include "shell/AudioSet.h"
#include "shell/Interrupt.h"

namespace Zantrix::Cli {

int runEvaluate(const std::vector<std::string>& arguments) {
    std::optional<EvaluateOptions> options = parseEvaluateOptions(arguments);
    if (!options) {
        return AllDone;
    }
    Diagnostics diagnostics(options->log);
    bool isAllDone = options->audioSet.empty() || appendAudioSet(options->audioSet, options->files, diagnostics);
    protectFiles(*options);
    if (options->files.empty()) {
        diagnostics.error("no file to process");
        return SomeFailed;
    }
    Progress progress(diagnostics, options->files, false);
    FileEvaluation evaluation(*options, diagnostics, progress);
    for (const std::string& file : options->files) {
        using Outcome = FileEvaluation::Outcome;
        diagnostics.beginInput(file);
        const Outcome outcome = Interrupt::requested() ? Outcome::Interrupted : evaluation.process(file);
        diagnostics.endInput();
        if (outcome == Outcome::Interrupted) {
            diagnostics.error("interrupted");
            return Interrupted;
        }
        isAllDone = isAllDone && outcome == Outcome::Done;
    }
    return isAllDone ? AllDone : SomeFailed;
}

}  // namespace Zantrix::Cli
