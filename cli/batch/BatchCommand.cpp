#include "batch/BatchCommand.h"

#include "Command.h"
#include "batch/FailureList.h"
#include "shell/Interrupt.h"

namespace Zantrix::Cli {

namespace {

int process(const BatchOptions& options, InputNames& inputs, FailureList& failures, Diagnostics& diagnostics,
            bool resultsOnScreen, const RunInputs& runInputs) {
    for (const InputNames::Unreadable& unreadable : inputs.unreadable()) {
        failures.add(unreadable.list, unreadable.why);
    }
    if (inputs.isEmpty()) {
        diagnostics.error(Interrupt::requested() ? "interrupted" : "no file to process");
        return Interrupt::requested() ? Interrupted : SomeFailed;
    }
    if (const auto& shard = options.shard) {
        inputs.keep(shard->first(inputs.size()), shard->end(inputs.size()));
    }
    Progress progress(diagnostics, inputs, resultsOnScreen);
    Crew crew(options.threads());
    BatchRun run(inputs, crew, failures, diagnostics, progress);
    const BatchRun::Result result = runInputs(run, crew, progress);
    if (result == BatchRun::Result::Interrupted) {
        diagnostics.error("interrupted");
        return Interrupted;
    }
    return inputs.unreadable().empty() && result == BatchRun::Result::AllDone ? AllDone : SomeFailed;
}

}  // namespace

int runBatch(const BatchOptions& options, InputNames& inputs, Diagnostics& diagnostics, bool resultsOnScreen,
             const RunInputs& runInputs) {
    FailureList failures;
    if (!failures.open(options.failures)) {
        diagnostics.error(failures.describeError());
        return SomeFailed;
    }
    const int exitCode = process(options, inputs, failures, diagnostics, resultsOnScreen, runInputs);
    if (!failures.finish()) {
        diagnostics.error(failures.describeError());
        return exitCode == AllDone ? SomeFailed : exitCode;
    }
    return exitCode;
}

}  // namespace Zantrix::Cli
