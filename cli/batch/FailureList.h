#pragma once

#include "shell/Output.h"

#include <string>
#include <string_view>

namespace Zantrix::Cli {

/// A file with a line for each input that failed: its name, a tab, and why. Control characters and backslashes in
/// either are escaped as in C. The file appears when the run ends, however that may be.
class FailureList {
public:
    /// Starts the file.
    ///
    /// @param path  "" for none: all else does nothing then
    bool open(const std::string& path);

    void add(std::string_view name, std::string_view why);

    /// Has the file appear; false, also after `open`, when it cannot: see `describeError`.
    bool finish();

    std::string describeError() const { return m_output.describeError(); }

private:
    bool m_bWanted = false;
    Output m_output;
};

}  // namespace Zantrix::Cli
