#pragma once

#include "shell/Diagnostics.h"
#include "shell/InputNames.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace Zantrix::Cli {

/// A line on the terminal that tells how far the work has come, how fast it goes and how long it will take. It is
/// drawn ten times a second at most and removed at the end. There is one object of this class at a time; each thread
/// tells of its own input, and the line is drawn by the thread that made the object.
class Progress {
public:
    /// @param inputs          the names of all inputs
    /// @param resultsOnScreen  whether results go to the terminal, where a line among them would be in the way
    Progress(Diagnostics& diagnostics, const InputNames& inputs, bool resultsOnScreen);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Counts an input as done when it ends, whatever came of it.
    class Input {
    public:
        explicit Input(Progress& progress) : m_progress(progress) {}
        ~Input() { m_progress.endInput(); }
        Input(const Input&) = delete;
        Input& operator=(const Input&) = delete;

    private:
        Progress& m_progress;
    };

    /// Tells which file the input of this thread is; as often as more is known of it.
    ///
    /// @param seconds  the length of the audio, 0 when it is not known
    void beginInput(const std::string& name, double seconds);

    /// How much of the input's audio is done.
    void advance(double seconds) {
        if (m_bShown) {
            count(seconds);
            draw();
        }
    }

    /// Draws the line if it is time to.
    void draw();

private:
    using Clock = std::chrono::steady_clock;

    void endInput();
    static void add(std::atomic<double>& sum, double value);
    void count(double seconds);

    Diagnostics& m_diagnostics;
    bool m_bShown = false;
    std::thread::id m_owner;
    Clock::time_point m_start;
    Clock::time_point m_nextDraw;
    std::size_t m_uiInputs;
    double m_dBytes = 0.0;  // 0: not known
    std::atomic<std::size_t> m_uiInputsDone = 0;
    std::atomic<double> m_dBytesDone = 0.0;
    std::atomic<double> m_dSecondsDone = 0.0;  // of audio
};

}  // namespace Zantrix::Cli
