#pragma once

#include <murvane/core/Export.h>
#include <murvane/core/Object.h>

#include <locale>
#include <sstream>
#include <string>

/// Logging over log4cplus. The library only ever asks and reports: which records are wanted, and where they go,
/// is configured by the program.
///
/// A record carries its location as a source name and a line, both given by the caller. Names are constants, and do
/// not change when a file is renamed: log filters key on them. Filters know some records by their line as well: these
/// carry that number as a literal, for good, wherever the code has moved since. All others pass __LINE__.
namespace Zantrix {

/// The levels of log4cplus, with its values.
enum class LogLevel : int { Trace = 0, Debug = 10000, Info = 20000, Warn = 30000, Error = 40000 };

/// The logger of one category. Created on first use, never destroyed, so that static destructors may still log.
class MURVANE_API Logger {
public:
    /// The logger of a category such as "murvane.audio.AudioFileReader"; always the same object for the same
    /// name. Callers keep the reference in a function-local static.
    static const Logger& forCategory(const char* category);

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Whether a record of this level would go anywhere at the moment.
    bool isEnabledFor(LogLevel level) const;

    /// The lowest level that is enabled at the moment: the logger's own or the nearest parent's.
    int getChainedLevel() const;

    /// Sends a record whatever the level; callers have checked.
    void forcedLog(LogLevel level, const std::string& message, const char* sourceName, int line) const;

    /// Sends a record made of `parts`, one after the other, if the level is enabled; builds nothing otherwise.
    template <typename... Parts>
    void log(LogLevel level, const char* sourceName, int line, const Parts&... parts) const;

private:
    explicit Logger(const char* category);
    ~Logger() = delete;

    struct Impl;
    Impl* m_pImpl;
};

/// The text that `log` makes of its parts: each as a string stream prints it, whatever the program's locale, since log
/// filters compare texts.
template <typename... Parts>
std::string concatenate(const Parts&... parts) {
    std::ostringstream message;
    message.imbue(std::locale::classic());
    (message << ... << parts);
    return message.str();
}

template <typename... Parts>
void Logger::log(LogLevel level, const char* sourceName, int line, const Parts&... parts) const {
    if (isEnabledFor(level)) {
        forcedLog(level, concatenate(parts...), sourceName, line);
    }
}

/// A base for objects that log often: keeps a copy of the logger's level, so that a disabled record costs one
/// compare. The copy is taken at construction, goes along with copies, and is refreshed by
/// `refreshLogLevel()`; a level changed in between is seen after the next refresh.
class MURVANE_API ObjectWithLogger : public virtual Object {
public:
    bool isLogEnabledFor(LogLevel level) const { return static_cast<int>(level) >= m_iLogLevel; }
    const Logger& getLogger() const { return *m_pLogger; }

protected:
    explicit ObjectWithLogger(const Logger& logger) : m_pLogger(&logger), m_iLogLevel(logger.getChainedLevel()) {}

    void refreshLogLevel() const { m_iLogLevel = m_pLogger->getChainedLevel(); }

    template <typename... Parts>
    void log(LogLevel level, const char* sourceName, int line, const Parts&... parts) const {
        if (isLogEnabledFor(level)) {
            m_pLogger->forcedLog(level, concatenate(parts...), sourceName, line);
        }
    }

private:
    const Logger* m_pLogger;
    // Mutable: queries are traced too, and a trace scope begins with a look at the level.
    mutable int m_iLogLevel;
};

/// Logs "ENTER: <scope>" when made and "EXIT:  <scope>" when left, both at TRACE. The latter is left out where there is
/// no memory for it, or an appender throws.
class MURVANE_API TraceScope {
public:
    /// @param scope,sourceName  literals (kept by pointer)
    TraceScope(const Logger& logger, const char* scope, const char* sourceName, int line)
        : TraceScope(logger, logger.isEnabledFor(LogLevel::Trace), scope, sourceName, line) {}

    /// The same with the object's cached level.
    TraceScope(const ObjectWithLogger& object, const char* scope, const char* sourceName, int line)
        : TraceScope(object.getLogger(), object.isLogEnabledFor(LogLevel::Trace), scope, sourceName, line) {}

    ~TraceScope() {
        if (m_pLogger != nullptr) {
            reportExit();
        }
    }

    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    TraceScope(const Logger& logger, bool enabled, const char* scope, const char* sourceName, int line)
        : m_pLogger(enabled ? &logger : nullptr), m_szScope(scope), m_szSourceName(sourceName), m_iLine(line) {
        if (m_pLogger != nullptr) {
            report("ENTER: ");
        }
    }

    void report(const char* what) const;
    void reportExit() const noexcept;

    const Logger* m_pLogger;
    const char* m_szScope;
    const char* m_szSourceName;
    int m_iLine;
};

}  // namespace Zantrix
