#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>
#include <testkit/ForeignLocale.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>

#include <gmock/gmock.h>
#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::traced;
using Zantrix::Assertion;
using Zantrix::Logger;
using Zantrix::LogLevel;
using Zantrix::setAssertionHandler;
using Zantrix::TraceScope;

constexpr const char* c_szCategory = "murvane.test.Logging";

const Logger& logger() {
    return Logger::forCategory(c_szCategory);
}

/// Counts how often it is printed.
struct Printed {
    mutable int times = 0;
};

std::ostream& operator<<(std::ostream& os, const Printed& printed) {
    ++printed.times;
    return os << "printed";
}

class AppenderThatThrowsAtExits : public log4cplus::Appender {
public:
    ~AppenderThatThrowsAtExits() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        if (event.getMessage().compare(0, 4, "EXIT") == 0) {
            throw std::runtime_error("full");
        }
    }
};

TEST(Logger, IsOneObjectPerCategory) {
    EXPECT_EQ(&Logger::forCategory("murvane.test.A"), &Logger::forCategory("murvane.test.A"));
    EXPECT_NE(&Logger::forCategory("murvane.test.A"), &Logger::forCategory("murvane.test.B"));
}

TEST(Logger, KnowsTheLevelOfItsCategoryOrOfTheNearestAbove) {
    const LogRecorder above(log4cplus::WARN_LOG_LEVEL, "murvane.test");
    EXPECT_EQ(logger().getChainedLevel(), log4cplus::WARN_LOG_LEVEL);
    EXPECT_FALSE(logger().isEnabledFor(LogLevel::Info));
    EXPECT_TRUE(logger().isEnabledFor(LogLevel::Warn));
    const LogRecorder own(log4cplus::TRACE_LOG_LEVEL, c_szCategory);
    EXPECT_EQ(logger().getChainedLevel(), log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(logger().isEnabledFor(LogLevel::Trace));
}

TEST(Logger, WritesNumbersTheSameInAnyLocale) {
    const testkit::ForeignLocale locale;
    const LogRecorder log;
    logger().log(LogLevel::Warn, "SomeSource", 42, 1234567, " ", 0.5, " ", true);
    EXPECT_THAT(log.records(), ElementsAre(LogRecord{c_szCategory, log4cplus::WARN_LOG_LEVEL, "1234567 0.5 1"}));
}

TEST(Logger, SendsARecordWithTheLocationGiven) {
    LogRecorder log;
    logger().log(LogLevel::Warn, "SomeSource", 42, "value ", 7, ", ", 0.5);
    EXPECT_EQ(log.records(), (LogRecords{{c_szCategory, log4cplus::WARN_LOG_LEVEL, "value 7, 0.5", "SomeSource", 42}}));
}

TEST(Logger, BuildsNoMessageThatIsNotWanted) {
    LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    const Printed printed;
    logger().log(LogLevel::Debug, "S", 1, printed);
    EXPECT_EQ(printed.times, 0);
    logger().log(LogLevel::Info, "S", 1, printed);
    EXPECT_EQ(printed.times, 1);
    EXPECT_EQ(log.records().size(), 1u);
}

TEST(Logger, SendsWhateverItIsForcedTo) {
    LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    logger().forcedLog(LogLevel::Debug, "message", "S", 3);
    EXPECT_EQ(log.records(), (LogRecords{{c_szCategory, log4cplus::DEBUG_LOG_LEVEL, "message", "S", 3}}));
}

TEST(Logger, PrintsPartsAsAStreamDoes) {
    EXPECT_EQ(Zantrix::concatenate("a", 'b', 1, true, std::string("c")), "ab11c");
    EXPECT_EQ(Zantrix::concatenate("0x", std::hex, 255), "0xff");
}

TEST(TraceScope, LogsItsEntryAndItsExit) {
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    {
        const TraceScope outer(logger(), "Outer::work", "Outer", 10);
        EXPECT_EQ(log.records(),
                  (LogRecords{{c_szCategory, log4cplus::TRACE_LOG_LEVEL, "ENTER: Outer::work", "Outer", 10}}));
        const TraceScope inner(logger(), "Inner::work", "Inner", 20);
    }
    EXPECT_EQ(log.records(),
              traced(c_szCategory, "Outer", "Outer::work", traced(c_szCategory, "Inner", "Inner::work")));
}

TEST(TraceScope, IsSilentWhereTracesAreNotWanted) {
    LogRecorder log(log4cplus::DEBUG_LOG_LEVEL);
    { const TraceScope scope(logger(), "Scope", "S", 1); }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(TraceScope, EndsAsItBegan) {
    LogRecorder log(log4cplus::DEBUG_LOG_LEVEL);
    {
        const TraceScope silent(logger(), "Silent", "S", 1);
        const LogRecorder level(log4cplus::TRACE_LOG_LEVEL, "murvane.test.Other");
        log4cplus::Logger::getInstance(c_szCategory).setLogLevel(log4cplus::TRACE_LOG_LEVEL);
        {
            const TraceScope loud(logger(), "Loud", "S", 1);
            log4cplus::Logger::getInstance(c_szCategory).setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
        }
    }
    EXPECT_EQ(log.records(), traced(c_szCategory, "S", "Loud"));
}

/// An object that logs, with what is protected made public.
struct Talker : Zantrix::ObjectWithLogger {
    Talker() : ObjectWithLogger(logger()) {}
    using ObjectWithLogger::log;
    using ObjectWithLogger::refreshLogLevel;
};

TEST(TraceScope, LeavesOutAnExitThatCannotBeLogged) {
    log4cplus::Logger target = log4cplus::Logger::getInstance(c_szCategory);
    const log4cplus::LogLevel level = target.getLogLevel();
    target.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    log4cplus::SharedAppenderPtr pAppender(new AppenderThatThrowsAtExits);
    target.addAppender(pAppender);
    { const TraceScope scope(logger(), "scope", "Source", 1); }
    EXPECT_THROW(logger().log(LogLevel::Warn, "Source", 1, "EXIT"), std::runtime_error);
    target.removeAppender(pAppender);
    target.setLogLevel(level);
}

TEST(ObjectWithLogger, SeesANewLevelAfterItsNextRefresh) {
    const LogRecorder quiet(log4cplus::WARN_LOG_LEVEL);
    Talker talker;
    EXPECT_FALSE(talker.isLogEnabledFor(LogLevel::Info));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    talker.log(LogLevel::Info, "S", 1, "unheard");
    { const TraceScope scope(talker, "Unheard", "S", 1); }
    EXPECT_THAT(log.take(), IsEmpty());
    const Talker copy(talker);
    EXPECT_FALSE(copy.isLogEnabledFor(LogLevel::Info)) << "the copy of the level goes along";

    talker.refreshLogLevel();
    talker.log(LogLevel::Info, "S", 1, "heard");
    { const TraceScope scope(talker, "Heard", "S", 1); }
    EXPECT_EQ(log.take(), joined(LogRecords{{c_szCategory, log4cplus::INFO_LOG_LEVEL, "heard", "S", 1}},
                                 traced(c_szCategory, "S", "Heard")));
    EXPECT_FALSE(copy.isLogEnabledFor(LogLevel::Info));
    EXPECT_EQ(&copy.getLogger(), &logger());
}

TEST(ObjectWithLogger, BuildsNoMessageThatIsNotWanted) {
    LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    const Talker talker;
    const Printed printed;
    talker.log(LogLevel::Info, "S", 1, printed);
    EXPECT_EQ(printed.times, 0);
}

// --- assertions ---

TEST(Assertion, IsSilentWhenItHolds) {
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(Assertion(true, "true", "Source", 1));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(Assertion, LogsOneErrorAndGoesOnWhenItFails) {
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(Assertion(false, "a == b", "Source", 123));
    EXPECT_EQ(log.records(), LogRecords{failedAssertion("a == b", "Source", 123)});
}

std::vector<std::string> g_handled;

void handle(const char* text, const char* source, int line) {
    g_handled.push_back(Zantrix::concatenate(text, '|', source, '|', line));
}

void handleOtherwise(const char*, const char*, int) {
    g_handled.push_back("otherwise");
}

TEST(AssertionHandler, IsToldOfEachFailedAssertionAfterItsRecord) {
    const LogRecorder log;
    g_handled.clear();
    EXPECT_EQ(setAssertionHandler(handle), nullptr);
    EXPECT_TRUE(Assertion(true, "c", "S", 1));
    EXPECT_THAT(g_handled, IsEmpty());
    EXPECT_FALSE(Assertion(false, "c", "S", 1));
    EXPECT_THAT(g_handled, ElementsAre("c|S|1"));
    EXPECT_EQ(log.records(), LogRecords{failedAssertion("c", "S", 1)});

    EXPECT_EQ(setAssertionHandler(handleOtherwise), &handle);
    EXPECT_FALSE(Assertion(false, "c", "S", 1));
    EXPECT_EQ(setAssertionHandler(nullptr), &handleOtherwise);
    EXPECT_FALSE(Assertion(false, "c", "S", 1));
    EXPECT_THAT(g_handled, ElementsAre("c|S|1", "otherwise"));
}

TEST(AssertionHandler, IsToldEvenWhereNoRecordIsWanted) {
    LogRecorder log(log4cplus::OFF_LOG_LEVEL);
    g_handled.clear();
    setAssertionHandler(handle);
    EXPECT_FALSE(Assertion(false, "c", "S", 1));
    setAssertionHandler(nullptr);
    EXPECT_THAT(g_handled, ElementsAre("c|S|1"));
    EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
