#pragma once

#include "shell/Diagnostics.h"

namespace Zantrix::Cli {

/// While one exists, the command tells users in its own words what the library tells programs about annotated files;
/// but whoever asks for a log level, or configures the log, gets the records, too.
class OwnWords {
public:
    explicit OwnWords(const LogOptions& options);
    ~OwnWords();
    OwnWords(const OwnWords&) = delete;
    OwnWords& operator=(const OwnWords&) = delete;

private:
    bool m_bSilent;
};

}  // namespace Zantrix::Cli
