#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

/// Everything that goes to standard error passes here: the command's messages, the library's log records and the
/// progress line, so that they never run into each other.
namespace Zantrix::Cli {

/// How much is told: from the options --log-level and --log-config.
struct LogOptions {
    std::string level;   ///< a name of `Diagnostics::levelNames`; "" for the default, WARN
    std::string config;  ///< a file of log4cplus properties; "" for the command's own way
};

/// What there is to tell of one input.
struct InputMessages {
    std::string name;
    bool areHeld = false;                          ///< lines wait for `Diagnostics::release`
    std::string lines;                             ///< those that wait, whole
    std::map<std::string, std::uint64_t> repeats;  ///< how often each record came
    std::string why;                               ///< the first error; "" while there is none
};

/// Lines have the form "murvane-audio: <input>: <message>". There is one object of this class at a time.
///
/// Each thread has an input of its own. The messages of one whose turn has not come yet can be held back, and an input
/// can be handed to another thread that ends it.
class Diagnostics {
public:
    /// Has the library report here.
    ///
    /// @throw UsageError for an unknown level and for a configuration file that cannot be read
    explicit Diagnostics(const LogOptions& options);
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    /// To be called once before anything else: until there is an object of this class, what the library reports goes
    /// nowhere, but is heard by `QuietLog`.
    static void begin();

    static constexpr const char* levelNames = "TRACE, DEBUG, INFO, WARN, ERROR, OFF";

    /// Why something was not done. Always printed.
    void error(const std::string& message);

    /// What was done, but may not be what one thinks. Printed at level WARN and below.
    void warning(const std::string& message);

    /// The input that all messages of this thread are about until `endInput`; also the innermost diagnostic context of
    /// log4cplus, which a layout prints for %x.
    void beginInput(const std::string& name);

    /// Also tells how often messages that were printed once came again.
    void endInput();

    /// Calls the input of this thread by another name from now on.
    void renameInput(const std::string& name);

    /// The input of this thread and what was said of it so far.
    const InputMessages& input() const;

    /// From now on messages about the input of this thread wait for `release`.
    void hold();

    /// Prints what waits; further messages are printed at once.
    void release();

    /// Takes back what was said of the input since a copy of `input()` was made, as far as it waits.
    void rewind(const InputMessages& earlier);

    /// Takes the input off this thread, without ending it.
    InputMessages handOver();

    /// Gives an input to this thread, with what was said of it so far, in place of the input that the thread had. That
    /// one must have been ended or handed over: what it had to say would be lost.
    void takeOver(InputMessages messages);

    /// Whether the options name a level or a configuration.
    bool isLogAskedFor() const { return m_bLogAskedFor; }

    /// Shows a line that the next message, or the next status, replaces; "" removes it. For terminals only.
    void status(const std::string& line);

private:
    class RecordAppender;

    void record(const std::string& input, const std::string& message, int level);
    void line(const std::string& input, const std::string& message);
    void print(const std::string& lines);
    void showStatus(const std::string& line);

    const bool m_bLogAskedFor;
    bool m_bWarnings = true;
    std::mutex m_mutex;  // guards what follows, and that lines do not mix
    bool m_bStatusShown = false;
};

/// No log record of this thread goes anywhere while one of these exists: for asking the library what it knows. Of
/// several the youngest hears a record.
class QuietLog {
public:
    /// @param only  the text of the records that go nowhere, which must outlive the object; all without
    explicit QuietLog(std::string_view only = {});
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

    /// The text of the first error that went nowhere; "" for none, and where a configured log has no errors.
    const std::string& firstError() const { return m_strFirstError; }

    /// Whether a record of this thread goes nowhere; if so, it is heard.
    static bool swallows(const std::string& message, int level);

private:
    QuietLog* m_pOlder;
    std::string_view m_strOnly;
    std::string m_strFirstError;
};

}  // namespace Zantrix::Cli
