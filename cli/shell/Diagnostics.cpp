#include "shell/Diagnostics.h"

#include "Command.h"
#include "shell/Text.h"

#include <log4cplus/appender.h>
#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>
#include <log4cplus/ndc.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

// More different records about one input than anybody reads.
constexpr std::size_t c_uiMaxRemembered = 100;

thread_local InputMessages t_input;
thread_local QuietLog* t_pQuiet = nullptr;  // the youngest

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

// The first error is why an input failed.
void noteError(const std::string& message, int level) {
    if (level >= log4cplus::ERROR_LOG_LEVEL && t_input.why.empty()) {
        t_input.why = message;
    }
}

// A name must not be able to move the cursor.
std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return (c < ' ' && c != '\n') || c == 0x7f; }, '?');
    return text;
}

// Appenders that a configuration made do not know of `QuietLog`.
void heedQuiet(log4cplus::Logger logger) {
    namespace spi = log4cplus::spi;
    for (const log4cplus::SharedAppenderPtr& pAppender : logger.getAllAppenders()) {
        const spi::FilterPtr pFilter(new spi::FunctionFilter([](const spi::InternalLoggingEvent& event) {
            return QuietLog::swallows(event.getMessage(), event.getLogLevel()) ? spi::DENY : spi::NEUTRAL;
        }));
        pFilter->next = pAppender->getFilter();
        pAppender->setFilter(pFilter);
    }
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

// For the time before anybody is told anything.
class SilentAppender : public log4cplus::Appender {
public:
    ~SilentAppender() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        QuietLog::swallows(event.getMessage(), event.getLogLevel());
    }
};

}  // namespace

class Diagnostics::RecordAppender : public log4cplus::Appender {
public:
    RecordAppender(Diagnostics& diagnostics, log4cplus::LogLevel level) : m_diagnostics(diagnostics), m_level(level) {}
    ~RecordAppender() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        if (QuietLog::swallows(event.getMessage(), event.getLogLevel())) {
            return;
        }
        if (event.getLogLevel() >= m_level) {
            m_diagnostics.record(event.getNDC(), event.getMessage(), event.getLogLevel());
        } else {
            noteError(event.getMessage(), event.getLogLevel());
        }
    }

private:
    Diagnostics& m_diagnostics;
    const log4cplus::LogLevel m_level;
};

void Diagnostics::begin() {
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(log4cplus::SharedAppenderPtr(new SilentAppender));
    root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
}

Diagnostics::Diagnostics(const LogOptions& options)
    : m_bLogAskedFor(!options.level.empty() || !options.config.empty()) {
    const log4cplus::LogLevel level = parseLevel(options.level);
    m_bWarnings = level <= log4cplus::WARN_LOG_LEVEL;
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (options.config.empty()) {
        root.removeAllAppenders();
        root.addAppender(log4cplus::SharedAppenderPtr(new RecordAppender(*this, level)));
        // Errors that are not printed are still reasons.
        root.setLogLevel(std::min<log4cplus::LogLevel>(level, log4cplus::ERROR_LOG_LEVEL));
        return;
    }
    if (!std::ifstream(options.config).good() || std::ifstream(options.config).peek() == EOF) {
        throw UsageError("cannot read the log configuration '" + options.config + "'");
    }
    root.removeAllAppenders();
    root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    log4cplus::PropertyConfigurator(options.config).configure();
    if (!options.level.empty()) {
        root.setLogLevel(level);
    }
    heedQuiet(root);
    for (const log4cplus::Logger& logger : log4cplus::Logger::getCurrentLoggers()) {
        heedQuiet(logger);
    }
}

Diagnostics::~Diagnostics() {
    status("");
    log4cplus::Logger::getRoot().removeAllAppenders();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
}

void Diagnostics::error(const std::string& message) {
    if (t_input.why.empty()) {
        t_input.why = message;
    }
    line(t_input.name, message);
}

void Diagnostics::warning(const std::string& message) {
    if (m_bWarnings) {
        line(t_input.name, "warning: " + message);
    }
}

void Diagnostics::beginInput(const std::string& name) {
    InputMessages messages;
    messages.name = name.empty() ? "''" : name;
    takeOver(std::move(messages));
}

void Diagnostics::endInput() {
    for (const auto& [message, count] : t_input.repeats) {
        if (count > 1) {
            line(t_input.name, message + " (" + std::to_string(count - 1) + " more times)");
        }
    }
    release();
    handOver();
}

void Diagnostics::renameInput(const std::string& name) {
    InputMessages messages = handOver();
    messages.name = name.empty() ? "''" : name;
    takeOver(std::move(messages));
}

const InputMessages& Diagnostics::input() const {
    return t_input;
}

void Diagnostics::hold() {
    t_input.areHeld = true;
}

void Diagnostics::release() {
    t_input.areHeld = false;
    if (!t_input.lines.empty()) {
        print(std::exchange(t_input.lines, {}));
    }
}

void Diagnostics::rewind(const InputMessages& earlier) {
    if (t_input.areHeld) {
        t_input = earlier;
    }
}

InputMessages Diagnostics::handOver() {
    log4cplus::getNDC().pop();
    return std::exchange(t_input, {});
}

void Diagnostics::takeOver(InputMessages messages) {
    t_input = std::move(messages);
    log4cplus::getNDC().push(t_input.name);
}

void Diagnostics::status(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    showStatus(text);
}

void Diagnostics::showStatus(const std::string& text) {
    if (!text.empty() || m_bStatusShown) {
        writeError("\r" + text + "\x1b[K");
    }
    m_bStatusShown = !text.empty();
}

void Diagnostics::record(const std::string& input, const std::string& message, int level) {
    std::map<std::string, std::uint64_t>& repeats = t_input.repeats;
    // Records that describe the course of things are worth telling every time.
    const bool mayRepeat = level < log4cplus::WARN_LOG_LEVEL;
    if (!mayRepeat && (repeats.size() < c_uiMaxRemembered || repeats.count(message) != 0) && ++repeats[message] > 1) {
        return;
    }
    noteError(message, level);
    line(input, message);
}

void Diagnostics::line(const std::string& input, const std::string& message) {
    std::string text = printable("murvane-audio: " + (input.empty() ? "" : input + ": ") + message) + '\n';
    if (t_input.areHeld) {
        t_input.lines += text;
    } else {
        print(text);
    }
}

// One write for all, so that lines of parallel commands do not mix.
void Diagnostics::print(const std::string& lines) {
    const std::lock_guard lock(m_mutex);
    showStatus("");
    writeError(lines);
}

QuietLog::QuietLog(std::string_view only) : m_pOlder(t_pQuiet), m_strOnly(only) {
    t_pQuiet = this;
}

QuietLog::~QuietLog() {
    t_pQuiet = m_pOlder;
}

bool QuietLog::swallows(const std::string& message, int level) {
    for (QuietLog* pQuiet = t_pQuiet; pQuiet != nullptr; pQuiet = pQuiet->m_pOlder) {
        if (!pQuiet->m_strOnly.empty() && pQuiet->m_strOnly != message) {
            continue;
        }
        if (level >= log4cplus::ERROR_LOG_LEVEL && pQuiet->m_strFirstError.empty()) {
            pQuiet->m_strFirstError = message;
        }
        return true;
    }
    return false;
}

}  // namespace Zantrix::Cli
