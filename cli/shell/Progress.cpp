#include "shell/Progress.h"

#include "shell/InputFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

// The sizes of more inputs than these are not asked for: that would take its time, and their number is as good.
constexpr std::size_t c_uiMaxLookedAt = 1000;

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
    constexpr double longest = 1e9;  // some thousand years, when next to nothing is done yet
    const auto total = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, longest) + 0.5);
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

// What a thread has told of its input.
struct Current {
    double bytes = 0.0;
    double seconds = 0.0;  // of all its audio; 0: not known
    double secondsDone = 0.0;
    double bytesDone = 0.0;
};

thread_local Current t_current;

}  // namespace

Progress::Progress(Diagnostics& diagnostics, const InputNames& inputs, bool resultsOnScreen)
    : m_diagnostics(diagnostics), m_owner(std::this_thread::get_id()), m_uiInputs(inputs.size()) {
    m_bShown = ::isatty(STDERR_FILENO) != 0 && !(resultsOnScreen && ::isatty(STDOUT_FILENO) != 0);
    m_start = m_nextDraw = Clock::now();
    for (std::size_t i = 0; m_bShown && m_uiInputs <= c_uiMaxLookedAt && i < inputs.size(); ++i) {
        m_dBytes += static_cast<double>(fileBytes(inputs.findQuietly(i).value_or("")));
    }
}

Progress::~Progress() {
    m_diagnostics.status("");
}

void Progress::beginInput(const std::string& name, double seconds) {
    t_current = {};
    if (m_bShown) {
        t_current.bytes = static_cast<double>(fileBytes(name));
        t_current.seconds = seconds;
        draw();
    }
}

void Progress::endInput() {
    add(m_dBytesDone, t_current.bytes - t_current.bytesDone);
    t_current = {};
    ++m_uiInputsDone;
}

void Progress::count(double seconds) {
    add(m_dSecondsDone, seconds - t_current.secondsDone);
    t_current.secondsDone = seconds;
    const double share = t_current.seconds > 0.0 ? std::min(1.0, seconds / t_current.seconds) : 0.0;
    add(m_dBytesDone, share * t_current.bytes - t_current.bytesDone);
    t_current.bytesDone = share * t_current.bytes;
}

void Progress::add(std::atomic<double>& sum, double value) {
    sum.fetch_add(value, std::memory_order_relaxed);
}

void Progress::draw() {
    if (!m_bShown || std::this_thread::get_id() != m_owner) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now < m_nextDraw) {
        return;
    }
    m_nextDraw = now + std::chrono::milliseconds(100);
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    const double seconds = m_dSecondsDone;
    std::string line = formatted("%.0f", static_cast<double>(m_uiInputsDone)) +
                       formatted("/%.0f files", static_cast<double>(m_uiInputs)) + ", " + clock(seconds) + " of audio";
    if (elapsed > 0.0 && seconds > 0.0) {
        line += formatted(", %.0f x real time", seconds / elapsed);
    }
    const double all = m_dBytes > 0.0 ? m_dBytes : static_cast<double>(m_uiInputs);
    const double done = m_dBytes > 0.0 ? m_dBytesDone.load() : static_cast<double>(m_uiInputsDone);
    if (done > 0.0 && elapsed > 0.0) {
        line += ", " + clock(elapsed * (all / done - 1.0)) + " left";
    }
    m_diagnostics.status(line.substr(0, terminalWidth()));
}

}  // namespace Zantrix::Cli
