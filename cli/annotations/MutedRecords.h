#pragma once

#include "shell/Diagnostics.h"

#include <optional>

namespace Zantrix::Cli {

/// While one exists, what the library reports of this thread's work goes nowhere: the command tells the same in its
/// own words. But whoever asks for a log level, or configures the log, gets the records, too.
class MutedRecords {
public:
    explicit MutedRecords(const Diagnostics& diagnostics) {
        if (!diagnostics.isLogAskedFor()) {
            m_quiet.emplace();
        }
    }

private:
    std::optional<QuietLog> m_quiet;
};

}  // namespace Zantrix::Cli
