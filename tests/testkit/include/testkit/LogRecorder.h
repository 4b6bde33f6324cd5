#pragma once

#include <log4cplus/logger.h>

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace testkit {

/// One log record. A record that a test expects may leave the source and the line open: such a one equals records
/// of any source or line.
struct LogRecord {
    std::string category;
    int level;
    std::string message;
    std::optional<std::string> source{};
    std::optional<int> line{};
};

bool operator==(const LogRecord& a, const LogRecord& b);
std::ostream& operator<<(std::ostream& os, const LogRecord& record);

/// Records what is logged at a category and below it, from construction to destruction, and keeps it from every
/// other appender. The category's level is restored afterwards.
class LogRecorder {
public:
    /// @param category  "" for every category
    explicit LogRecorder(log4cplus::LogLevel level = log4cplus::DEBUG_LOG_LEVEL,
                         const std::string& category = "murvane");
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// The records so far, in order.
    const std::vector<LogRecord>& records() const;

    /// The records so far, which are then forgotten.
    std::vector<LogRecord> take();

private:
    class Appender;

    log4cplus::Logger m_logger;
    log4cplus::LogLevel m_previousLevel;
    bool m_previousAdditivity;
    log4cplus::SharedAppenderPtr m_pAppender;
    Appender* m_pRecords;
};

/// What a failed assertion logs.
LogRecord failedAssertion(const std::string& text, const std::string& source, std::optional<int> line = {});

}  // namespace testkit
