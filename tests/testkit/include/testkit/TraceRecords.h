#pragma once

#include <testkit/LogRecorder.h>

#include <string>
#include <vector>

namespace testkit {

using LogRecords = std::vector<LogRecord>;

/// One list of records after the other.
template <typename... Lists>
LogRecords joined(LogRecords first, const Lists&... rest) {
    (first.insert(first.end(), rest.begin(), rest.end()), ...);
    return first;
}

/// What a trace scope logs, around what is logged inside it.
inline LogRecords traced(const std::string& category, const std::string& source, const std::string& scope,
                         const LogRecords& inside = {}) {
    return joined({{category, log4cplus::TRACE_LOG_LEVEL, "ENTER: " + scope, source}}, inside,
                  LogRecords{{category, log4cplus::TRACE_LOG_LEVEL, "EXIT:  " + scope, source}});
}

}  // namespace testkit
