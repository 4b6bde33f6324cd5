#include "annotations/ToneLabel.h"

#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::Logger;
using Zantrix::Audio::matchesToneLabel;

bool matches(const char* label, const char* regex) {
    return matchesToneLabel(
        label, regex, [=] { return Zantrix::BoostRegex(regex); }, Logger::forCategory("murvane.test.ToneLabel"),
        "SomeSource");
}

LogRecord unexpected(const std::string& regex) {
    return {"murvane.test.ToneLabel",
            log4cplus::ERROR_LOG_LEVEL,
            "Unexpected std::runtime exception caught in with regex: \"" + regex + '"',
            "SomeSource",
            {}};
}

TEST(ToneLabel, MatchesAsAWholeAndInAnyCase) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(matches("sf_440", "SF_[0-9]*"));
    EXPECT_FALSE(matches("sf_440x", "SF_[0-9]*"));
    EXPECT_TRUE(matches("", ""));
    EXPECT_FALSE(matches(nullptr, ".*"));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(ToneLabel, AnErrorOfTheExpressionIsReportedAndNoMatch) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(matches("SF_440", "SF_("));
    EXPECT_FALSE(matches(std::string(200, 'a').c_str(), "(a*)*(a*)*(a*)*(a*)*b"));
    EXPECT_THAT(log.records(), ElementsAre(unexpected("SF_("), unexpected("(a*)*(a*)*(a*)*(a*)*b")));
}

}  // namespace
