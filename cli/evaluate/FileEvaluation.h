#pragma once

#include "annotations/Recording.h"
#include "evaluate/ChannelRuns.h"
#include "evaluate/EvaluateOptions.h"
#include "shell/InputFile.h"
#include "shell/Progress.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Evaluates one file after the other. Objects share nothing that changes: each thread may have one.
class FileEvaluation {
public:
    /// @param options  must outlive the object
    FileEvaluation(const EvaluateOptions& options, Diagnostics& diagnostics, Progress& progress);

    /// Evaluates one file and writes its outputs; with --resume, unless these are there already.
    ///
    /// @return false when something went wrong, which was reported and leaves no output of the file that is not whole;
    ///         without a report when the run was interrupted
    bool process(const std::string& name);

private:
    bool checkInput(InputFile& input);
    bool checkFormulas(std::uint64_t rate);
    bool isUpToDate(const InputFile& input) const;
    bool evaluate(const InputFile& input);
    std::vector<TimedLabel> longEnough(const std::vector<ChannelRun>& runs, std::uint64_t rate) const;
    bool failFormat(const InputFile& input);
    bool fail(const std::string& message);

    const EvaluateOptions& m_options;
    Diagnostics& m_diagnostics;
    Progress& m_progress;
    std::uint64_t m_uiCheckedRate = 0;  // at which the formulas are known to give one value each
};

}  // namespace Zantrix::Cli
