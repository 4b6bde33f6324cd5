#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

/// The library's records go nowhere, but they are made.
[[maybe_unused]] inline const bool g_bQuietLog = [] {
    log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    return true;
}();
