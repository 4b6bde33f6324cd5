#pragma once

#include "batch/BatchOptions.h"
#include "batch/BatchRun.h"
#include "batch/Crew.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"
#include "shell/Progress.h"

#include <functional>

namespace Zantrix::Cli {

/// What a subcommand that runs over many inputs does with them.
using RunInputs = std::function<BatchRun::Result(BatchRun& run, Crew& crew, Progress& progress)>;

/// All of such a subcommand but what it does: the list of failures, lists that could not be read, the part of the
/// inputs that is asked for, and what the exit code says.
///
/// @param inputs           gathered, and known not to be overwritten; reduced to the part
/// @param resultsOnScreen  whether results may go to the terminal
/// @param runInputs        called unless there is nothing to do; tells what came out, and itself why an output failed
/// @return an `ExitCode`
int runBatch(const BatchOptions& options, InputNames& inputs, Diagnostics& diagnostics, bool resultsOnScreen,
             const RunInputs& runInputs);

}  // namespace Zantrix::Cli
