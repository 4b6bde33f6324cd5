#pragma once

#include <cstdint>
#include <map>
#include <string>

/// Everything that goes to standard error passes here: the command's messages, the library's log records and the
/// progress line, so that they never run into each other.
namespace Zantrix::Cli {

/// How much is told: from the options --log-level and --log-config.
struct LogOptions {
    std::string level;   ///< a name of `Diagnostics::levelNames`; "" for the default, WARN
    std::string config;  ///< a file of log4cplus properties; "" for the command's own way
};

/// Lines have the form "murvane-audio: <input>: <message>". There is one object of this class at a time.
class Diagnostics {
public:
    /// Has the library report here.
    ///
    /// @throw UsageError for an unknown level and for a configuration file that cannot be read
    explicit Diagnostics(const LogOptions& options);
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    static constexpr const char* levelNames = "TRACE, DEBUG, INFO, WARN, ERROR, OFF";

    /// Why something was not done. Always printed.
    void error(const std::string& message);

    /// What was done, but may not be what one thinks. Printed at level WARN and below.
    void warning(const std::string& message);

    /// The input that all messages are about until `endInput`; also the innermost diagnostic context of log4cplus,
    /// which a layout prints for %x.
    void beginInput(const std::string& name);

    /// Also tells how often messages that were printed once came again.
    void endInput();

    /// Shows a line that the next message, or the next status, replaces; "" removes it. For terminals only.
    void status(const std::string& line);

private:
    class RecordAppender;

    void record(const std::string& input, const std::string& message, bool mayRepeat);
    void line(const std::string& input, const std::string& message);

    bool m_bWarnings = true;
    bool m_bStatusShown = false;
    std::string m_strInput;
    std::map<std::string, std::uint64_t> m_repeats;  // of each record about this input
};

/// No log record goes anywhere while one of these exists: for asking the library what it knows.
class QuietLog {
public:
    QuietLog();
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;
};

}  // namespace Zantrix::Cli
