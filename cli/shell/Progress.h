#pragma once

#include "shell/Diagnostics.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// A line on the terminal that tells how far the work has come, how fast it goes and how long it will take. It is
/// drawn ten times a second at most and removed at the end.
class Progress {
public:
    /// @param inputs          the names of all inputs
    /// @param resultsOnScreen  whether results go to the terminal, where a line among them would be in the way
    Progress(Diagnostics& diagnostics, const std::vector<std::string>& inputs, bool resultsOnScreen);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @param seconds  the length of the audio, 0 when it is not known
    void beginInput(const std::string& name, double seconds);

    /// How much of the input's audio is done.
    void advance(double seconds) {
        m_dInputDone = seconds;
        if (m_bShown) {
            draw();
        }
    }

    void endInput();

private:
    using Clock = std::chrono::steady_clock;

    void draw();

    Diagnostics& m_diagnostics;
    bool m_bShown = false;
    Clock::time_point m_start;
    Clock::time_point m_nextDraw;
    std::size_t m_uiInputs;
    std::size_t m_uiInputsDone = 0;
    std::uint64_t m_uiBytes = 0;
    std::uint64_t m_uiBytesDone = 0;
    std::uint64_t m_uiInputBytes = 0;
    double m_dSecondsDone = 0.0;  // of audio, in earlier inputs
    double m_dInputSeconds = 0.0;
    double m_dInputDone = 0.0;
};

}  // namespace Zantrix::Cli
