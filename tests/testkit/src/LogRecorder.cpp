#include "testkit/LogRecorder.h"

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

#include <ostream>
#include <utility>

namespace testkit {

class LogRecorder::Appender : public log4cplus::Appender {
public:
    ~Appender() override { destructorImpl(); }

    void close() override {}

    std::vector<LogRecord> m_records;

private:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        m_records.push_back(
            {event.getLoggerName(), event.getLogLevel(), event.getMessage(), event.getFile(), event.getLine()});
    }
};

bool operator==(const LogRecord& a, const LogRecord& b) {
    return a.category == b.category && a.level == b.level && a.message == b.message &&
           (!a.source || !b.source || a.source == b.source) && (!a.line || !b.line || a.line == b.line);
}

std::ostream& operator<<(std::ostream& os, const LogRecord& record) {
    return os << record.category << ' ' << record.level << " \"" << record.message << "\" "
              << record.source.value_or("?") << ':' << record.line.value_or(-1);
}

LogRecorder::LogRecorder(log4cplus::LogLevel level, const std::string& category)
    : m_logger(category.empty() ? log4cplus::Logger::getRoot() : log4cplus::Logger::getInstance(category)),
      m_previousLevel(m_logger.getLogLevel()),
      m_previousAdditivity(m_logger.getAdditivity()),
      m_pAppender(new Appender),
      m_pRecords(static_cast<Appender*>(m_pAppender.get())) {
    m_logger.setLogLevel(level);
    m_logger.setAdditivity(false);
    m_logger.addAppender(m_pAppender);
}

LogRecorder::~LogRecorder() {
    m_logger.removeAppender(m_pAppender);
    m_logger.setAdditivity(m_previousAdditivity);
    m_logger.setLogLevel(m_previousLevel);
}

const std::vector<LogRecord>& LogRecorder::records() const {
    return m_pRecords->m_records;
}

std::vector<LogRecord> LogRecorder::take() {
    return std::exchange(m_pRecords->m_records, {});
}

LogRecord failedAssertion(const std::string& text, const std::string& source, std::optional<int> line) {
    return {"murvane.core.Assertion", log4cplus::ERROR_LOG_LEVEL, "Assertion failed: " + text, source, line};
}

}  // namespace testkit
