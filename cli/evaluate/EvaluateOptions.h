#pragma once

#include "batch/BatchOptions.h"
#include "evaluate/Channel.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"
#include "shell/Options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// What a run of 'murvane-audio evaluate' is to do.
struct EvaluateOptions {
    InputArguments inputs;
    BatchOptions batch;
    std::vector<Channel> channels;
    std::int64_t windowMs = 16;
    std::optional<std::int64_t> contextMs;  ///< as long as the window unless given
    std::string suffix = "prob";
    std::string outputDir = ".";
    std::optional<std::int64_t> annotateMs;  ///< the shortest run to annotate; none: annotate nothing
    LogOptions log;

    std::uint64_t contextMsInForce() const { return static_cast<std::uint64_t>(contextMs.value_or(windowMs)); }

    /// Where the samples and the channels of a file go.
    std::string curvesPath(const std::string& file) const;

    /// Where its annotated copy goes.
    std::string annotatedPath(const std::string& file) const;
};

/// Reads the arguments; all but the files are then known to make sense.
///
/// @return nothing when help was asked for, which is printed
/// @throw UsageError for the first thing that is wrong
std::optional<EvaluateOptions> parseEvaluateOptions(const std::vector<std::string>& arguments);

/// Makes sure that no output replaces an input. An input whose outputs would go where those of one before it go is
/// refused (see `InputNames::refuse`); as the whole list decides, it is the same one in each part of it.
///
/// @throw UsageError  naming the files
void protectFiles(const EvaluateOptions& options, InputNames& inputs);

}  // namespace Zantrix::Cli
