#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>

#include <atomic>

namespace Zantrix {

namespace {

std::atomic<AssertionHandler> g_handler{nullptr};

}  // namespace

bool Assertion(bool condition, const char* conditionText, const char* sourceName, int line) {
    if (!condition) {
        static const Logger& logger = Logger::forCategory("murvane.core.Assertion");
        logger.log(LogLevel::Error, sourceName, line, "Assertion failed: ", conditionText);
        if (AssertionHandler handler = g_handler.load()) {
            handler(conditionText, sourceName, line);
        }
    }
    return condition;
}

AssertionHandler setAssertionHandler(AssertionHandler handler) {
    return g_handler.exchange(handler);
}

}  // namespace Zantrix
