#include "shell/Diagnostics.h"

#include "Command.h"
#include "shell/Text.h"

#include <log4cplus/appender.h>
#include <log4cplus/configurator.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>
#include <log4cplus/ndc.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

// More different records about one input than anybody reads.
constexpr std::size_t c_uiMaxRemembered = 100;

void writeError(const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(STDERR_FILENO, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) {
            return;
        }
        done += written < 0 ? 0 : static_cast<std::size_t>(written);
    }
}

// A name must not be able to move the cursor.
std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return (c < ' ' && c != '\n') || c == 0x7f; }, '?');
    return text;
}

log4cplus::LogLevel parseLevel(const std::string& name) {
    if (name.empty()) {
        return log4cplus::WARN_LOG_LEVEL;
    }
    const std::string upper = upperCase(name);
    constexpr std::pair<const char*, log4cplus::LogLevel> levels[] = {
        {"TRACE", log4cplus::TRACE_LOG_LEVEL}, {"DEBUG", log4cplus::DEBUG_LOG_LEVEL},
        {"INFO", log4cplus::INFO_LOG_LEVEL},   {"WARN", log4cplus::WARN_LOG_LEVEL},
        {"ERROR", log4cplus::ERROR_LOG_LEVEL}, {"OFF", log4cplus::OFF_LOG_LEVEL},
    };
    for (const auto& [levelName, level] : levels) {
        if (upper == levelName) {
            return level;
        }
    }
    throw UsageError("unknown log level '" + name + "'; the levels are " + Diagnostics::levelNames);
}

}  // namespace

class Diagnostics::RecordAppender : public log4cplus::Appender {
public:
    explicit RecordAppender(Diagnostics& diagnostics) : m_diagnostics(diagnostics) {}
    ~RecordAppender() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        // Records that describe the course of things are worth telling every time.
        const bool mayRepeat = event.getLogLevel() < log4cplus::WARN_LOG_LEVEL;
        m_diagnostics.record(event.getNDC(), event.getMessage(), mayRepeat);
    }

private:
    Diagnostics& m_diagnostics;
};

Diagnostics::Diagnostics(const LogOptions& options) {
    const log4cplus::LogLevel level = parseLevel(options.level);
    m_bWarnings = level <= log4cplus::WARN_LOG_LEVEL;
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (options.config.empty()) {
        root.addAppender(log4cplus::SharedAppenderPtr(new RecordAppender(*this)));
        root.setLogLevel(level);
        return;
    }
    if (!std::ifstream(options.config).good() || std::ifstream(options.config).peek() == EOF) {
        throw UsageError("cannot read the log configuration '" + options.config + "'");
    }
    log4cplus::PropertyConfigurator(options.config).configure();
    if (!options.level.empty()) {
        root.setLogLevel(level);
    }
}

Diagnostics::~Diagnostics() {
    status("");
    log4cplus::Logger::getRoot().removeAllAppenders();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
}

void Diagnostics::error(const std::string& message) {
    line(m_strInput, message);
}

void Diagnostics::warning(const std::string& message) {
    if (m_bWarnings) {
        line(m_strInput, "warning: " + message);
    }
}

void Diagnostics::beginInput(const std::string& name) {
    m_strInput = name.empty() ? "''" : name;
    log4cplus::getNDC().push(m_strInput);
}

void Diagnostics::endInput() {
    for (const auto& [message, count] : m_repeats) {
        if (count > 1) {
            line(m_strInput, message + " (" + std::to_string(count - 1) + " more times)");
        }
    }
    m_repeats.clear();
    log4cplus::getNDC().pop();
    m_strInput.clear();
}

void Diagnostics::status(const std::string& text) {
    if (!text.empty() || m_bStatusShown) {
        writeError("\r" + text + "\x1b[K");
    }
    m_bStatusShown = !text.empty();
}

void Diagnostics::record(const std::string& input, const std::string& message, bool mayRepeat) {
    if (!mayRepeat && (m_repeats.size() < c_uiMaxRemembered || m_repeats.count(message) != 0) &&
        ++m_repeats[message] > 1) {
        return;
    }
    line(input, message);
}

// One write per message, so that those of parallel commands do not mix.
void Diagnostics::line(const std::string& input, const std::string& message) {
    status("");
    writeError(printable("murvane-audio: " + (input.empty() ? "" : input + ": ") + message) + '\n');
}

QuietLog::QuietLog() {
    log4cplus::Logger::getDefaultHierarchy().disableAll();
}

QuietLog::~QuietLog() {
    log4cplus::Logger::getDefaultHierarchy().enableAll();
}

}  // namespace Zantrix::Cli
