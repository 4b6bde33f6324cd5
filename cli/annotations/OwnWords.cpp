#include "annotations/OwnWords.h"

#include <log4cplus/logger.h>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_categories[] = {"murvane.audio.annotation", "murvane.core.Assertion"};

void setLevels(log4cplus::LogLevel level) {
    for (const char* category : c_categories) {
        log4cplus::Logger::getInstance(category).setLogLevel(level);
    }
}

}  // namespace

OwnWords::OwnWords(const LogOptions& options) : m_bSilent(options.level.empty() && options.config.empty()) {
    if (m_bSilent) {
        setLevels(log4cplus::OFF_LOG_LEVEL);
    }
}

OwnWords::~OwnWords() {
    if (m_bSilent) {
        setLevels(log4cplus::NOT_SET_LOG_LEVEL);
    }
}

}  // namespace Zantrix::Cli
