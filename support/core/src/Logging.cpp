#include <murvane/core/Logging.h>

#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>

#include <map>
#include <mutex>

namespace Zantrix {

static_assert(static_cast<int>(LogLevel::Trace) == log4cplus::TRACE_LOG_LEVEL);
static_assert(static_cast<int>(LogLevel::Debug) == log4cplus::DEBUG_LOG_LEVEL);
static_assert(static_cast<int>(LogLevel::Info) == log4cplus::INFO_LOG_LEVEL);
static_assert(static_cast<int>(LogLevel::Warn) == log4cplus::WARN_LOG_LEVEL);
static_assert(static_cast<int>(LogLevel::Error) == log4cplus::ERROR_LOG_LEVEL);

struct Logger::Impl {
    log4cplus::Logger logger;
};

const Logger& Logger::forCategory(const char* category) {
    // Neither the table nor the loggers are ever destroyed: static destructors may still log.
    static std::mutex& mutex = *new std::mutex;
    static auto& loggers = *new std::map<std::string, const Logger*>;
    const std::lock_guard lock(mutex);
    const Logger*& pLogger = loggers[category];
    if (pLogger == nullptr) {
        pLogger = new Logger(category);
    }
    return *pLogger;
}

Logger::Logger(const char* category) : m_pImpl(new Impl{log4cplus::Logger::getInstance(category)}) {}

bool Logger::isEnabledFor(LogLevel level) const {
    return m_pImpl->logger.isEnabledFor(static_cast<log4cplus::LogLevel>(level));
}

int Logger::getChainedLevel() const {
    return m_pImpl->logger.getChainedLogLevel();
}

void Logger::forcedLog(LogLevel level, const std::string& message, const char* sourceName, int line) const {
    m_pImpl->logger.forcedLog(static_cast<log4cplus::LogLevel>(level), message, sourceName, line);
}

void TraceScope::report(const char* what) const {
    m_pLogger->forcedLog(LogLevel::Trace, concatenate(what, m_szScope), m_szSourceName, m_iLine);
}

void TraceScope::reportExit() const noexcept {
    try {
        report("EXIT:  ");
    } catch (...) {
        // A destructor that throws ends the program: rather a record less.
    }
}

}  // namespace Zantrix
