#include "shell/Progress.h"

#include "shell/InputFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

// A line that wraps could not be removed.
std::size_t terminalWidth() {
    struct winsize size {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1U : 79U;
}

std::string formatted(const char* format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string clock(double seconds) {
    const auto total = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, 359999.0) + 0.5);
    std::array<char, 64> text{};
    if (total >= 3600) {
        std::snprintf(text.data(), text.size(), "%u:%02u:%02u", static_cast<unsigned>(total / 3600),
                      static_cast<unsigned>(total / 60 % 60), static_cast<unsigned>(total % 60));
    } else {
        std::snprintf(text.data(), text.size(), "%u:%02u", static_cast<unsigned>(total / 60),
                      static_cast<unsigned>(total % 60));
    }
    return text.data();
}

}  // namespace

Progress::Progress(Diagnostics& diagnostics, const std::vector<std::string>& inputs, bool resultsOnScreen)
    : m_diagnostics(diagnostics), m_uiInputs(inputs.size()) {
    m_bShown = ::isatty(STDERR_FILENO) != 0 && !(resultsOnScreen && ::isatty(STDOUT_FILENO) != 0);
    if (m_bShown) {
        for (const std::string& input : inputs) {
            m_uiBytes += fileBytes(input);
        }
    }
    m_start = m_nextDraw = Clock::now();
}

Progress::~Progress() {
    m_diagnostics.status("");
}

void Progress::beginInput(const std::string& name, double seconds) {
    m_uiInputBytes = m_bShown ? fileBytes(name) : 0;
    m_dInputSeconds = seconds;
    advance(0.0);
}

void Progress::endInput() {
    ++m_uiInputsDone;
    m_dSecondsDone += m_dInputDone;
    m_uiBytesDone += m_uiInputBytes;
    m_dInputDone = 0.0;
    m_uiInputBytes = 0;
}

void Progress::draw() {
    const Clock::time_point now = Clock::now();
    if (now < m_nextDraw) {
        return;
    }
    m_nextDraw = now + std::chrono::milliseconds(100);
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    const double seconds = m_dSecondsDone + m_dInputDone;
    std::string line = formatted("%.0f", static_cast<double>(m_uiInputsDone)) +
                       formatted("/%.0f files", static_cast<double>(m_uiInputs)) + ", " + clock(seconds) + " of audio";
    if (elapsed > 0.0 && seconds > 0.0) {
        line += formatted(", %.0f x real time", seconds / elapsed);
    }
    const double ofInput = m_dInputSeconds > 0.0 ? std::min(1.0, m_dInputDone / m_dInputSeconds) : 0.0;
    const double bytesDone = static_cast<double>(m_uiBytesDone) + ofInput * static_cast<double>(m_uiInputBytes);
    if (bytesDone > 0.0 && elapsed > 0.0) {
        line += ", " + clock(elapsed * (static_cast<double>(m_uiBytes) / bytesDone - 1.0)) + " left";
    }
    m_diagnostics.status(line.substr(0, terminalWidth()));
}

}  // namespace Zantrix::Cli
