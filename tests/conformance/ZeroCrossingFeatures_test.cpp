#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/infra/ParameterTrie.h>
#include <testkit/LogRecorder.h>
#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <cmath>
#include <limits>
#include <memory>

using namespace Zantrix;
using namespace Zantrix::Audio;
using Math::DoubleVector;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::c_dInfinity;
using testkit::c_dNaN;
using testkit::LogRecord;
using testkit::LogRecorder;

namespace {

constexpr double c_dSmallest = std::numeric_limits<double>::denorm_min();

// The number of crossings in one window.
double crossings(Math::SignalFeature& feature, const DoubleVector& in) {
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    EXPECT_EQ(out.size(), 1u);
    return out.at(0) * static_cast<double>(in.size());
}

double crossingsOfNew(const DoubleVector& in) {
    ZeroCrossingRateFeature feature;
    return crossings(feature, in);
}

double clippingRate(double low, double high, const DoubleVector& in) {
    ClippingRateFeature feature(low, high);
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    EXPECT_EQ(out.size(), 1u);
    return out.at(0);
}

TEST(ZeroCrossing, ASignChangeCountsOnce) {
    EXPECT_EQ(crossingsOfNew({1.0, -1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({-1.0, 1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({1.0, -1.0, 1.0, -1.0}), 3.0);
    EXPECT_EQ(crossingsOfNew({1.0, 2.0, 3.0, 0.5}), 0.0);
    EXPECT_EQ(crossingsOfNew({-1.0, -2.0, -c_dSmallest}), 0.0);
}

TEST(ZeroCrossing, ReachingZeroCountsAndLeavingItDoesNot) {
    EXPECT_EQ(crossingsOfNew({1.0, 0.0, -1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({1.0, 0.0, 1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({-1.0, 0.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({1.0, 0.0, 1.0, 0.0, -1.0, 1.0, 1.0, 1.0}), 3.0);
}

TEST(ZeroCrossing, RunOfZerosCountsOnceAtItsStart) {
    EXPECT_EQ(crossingsOfNew({1.0, 0.0, 0.0, 0.0, -1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({1.0, 0.0, -0.0, 0.0, 1.0, 0.0, 0.0, 0.0}), 2.0);
}

TEST(ZeroCrossing, AZeroThatIsTheVeryFirstSampleCounts) {
    ZeroCrossingRateFeature feature;
    DoubleVector out;
    EXPECT_TRUE(feature.compute({0.0, 0.0, 0.0}, out));
    EXPECT_THAT(out, ElementsAre(1.0 / 3.0));
    EXPECT_TRUE(feature.compute({0.0, 0.0, 0.0}, out));
    EXPECT_THAT(out, ElementsAre(1.0 / 3.0, 0.0));
    EXPECT_EQ(crossingsOfNew({-0.0}), 1.0);
}

TEST(ZeroCrossing, AFirstSampleOtherThanZeroDoesNotCount) {
    EXPECT_EQ(crossingsOfNew({1.0}), 0.0);
    EXPECT_EQ(crossingsOfNew({-1.0}), 0.0);
    EXPECT_EQ(crossingsOfNew({c_dNaN}), 0.0);
}

TEST(ZeroCrossing, TheValueIsAPlainShareOfTheSamplesWhateverTheRate) {
    ZeroCrossingRateFeature feature(8000);
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({1.0, -1.0, -1.0, 1.0, 1.0, 1.0, 1.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 2.0 / 7.0));
}

TEST(ZeroCrossing, TheLastSampleLinksAWindowToTheNext) {
    ZeroCrossingRateFeature feature;
    EXPECT_EQ(crossings(feature, {0.25, 0.5}), 0.0);
    EXPECT_EQ(crossings(feature, {-0.5, -0.25}), 1.0);
    EXPECT_EQ(crossings(feature, {0.0, 0.0}), 1.0);
    EXPECT_EQ(crossings(feature, {0.0, 0.0}), 0.0);
    EXPECT_EQ(crossings(feature, {-1.0}), 0.0);
    EXPECT_EQ(crossings(feature, {1.0}), 1.0);
}

TEST(ZeroCrossing, AnEmptyWindowIsZeroAndLeavesTheLastSample) {
    ZeroCrossingRateFeature feature;
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 0.0));
    EXPECT_EQ(crossings(feature, {0.0}), 1.0);  // still the very first sample
    EXPECT_EQ(crossings(feature, {0.5}), 0.0);
    EXPECT_TRUE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 0.0, 0.0));
    EXPECT_EQ(crossings(feature, {-0.5}), 1.0);
}

TEST(ZeroCrossing, WhatIsNotANumberIsNotZeroAndHasNoSign) {
    EXPECT_EQ(crossingsOfNew({1.0, c_dNaN, -1.0}), 0.0);
    EXPECT_EQ(crossingsOfNew({c_dNaN, 0.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({0.0, c_dNaN, 0.0, 0.0}), 2.0);
    EXPECT_EQ(crossingsOfNew({c_dNaN, c_dNaN}), 0.0);
}

TEST(ZeroCrossing, InfinitiesHaveASign) {
    EXPECT_EQ(crossingsOfNew({c_dInfinity, -c_dInfinity, c_dInfinity, c_dInfinity}), 2.0);
    EXPECT_EQ(crossingsOfNew({c_dInfinity, 0.0, -c_dInfinity, -1.0}), 1.0);
    EXPECT_EQ(crossingsOfNew({0.0, c_dInfinity}), 1.0);
}

TEST(ZeroCrossing, TheSignOfTheProductDecidesAlsoWhereItUnderflows) {
    EXPECT_EQ(crossingsOfNew({c_dSmallest, -c_dSmallest}), 0.0);
    EXPECT_EQ(crossingsOfNew({1e-200, -1e-200}), 0.0);
    EXPECT_EQ(crossingsOfNew({1e-100, -1e-100}), 1.0);
    EXPECT_EQ(crossingsOfNew({1e300, -1e300}), 1.0);
}

TEST(ZeroCrossing, ASineCrossesTwiceAPeriod) {
    const std::vector<double> samples = testkit::sine(8000, 440.0);
    // The sine of a multiple of pi is exactly zero only at the first sample.
    EXPECT_NEAR(crossingsOfNew(DoubleVector(samples.begin(), samples.end())), 880.0, 1.0);
}

TEST(ZeroCrossing, WorksWhenInputAndOutputAreOne) {
    ZeroCrossingRateFeature feature;
    DoubleVector both{1.0, -1.0};
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(1.0, -1.0, 0.5));
    EXPECT_EQ(crossings(feature, {1.0}), 1.0);
}

TEST(ZeroCrossing, CopiesContinueFromTheLastSampleByThemselves) {
    ZeroCrossingRateFeature feature(8000);
    crossings(feature, {1.0});
    const std::unique_ptr<Cloneable> pClone(feature.clone());
    auto* pFeature = dynamic_cast<ZeroCrossingRateFeature*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    ZeroCrossingRateFeature copy(feature);
    ZeroCrossingRateFeature assigned;
    crossings(assigned, {-1.0});
    assigned = feature;
    EXPECT_EQ(crossings(*pFeature, {-1.0}), 1.0);
    EXPECT_EQ(crossings(copy, {-1.0}), 1.0);
    EXPECT_EQ(crossings(assigned, {-1.0}), 1.0);
    EXPECT_EQ(crossings(feature, {1.0}), 0.0);
    feature = ZeroCrossingRateFeature();
    EXPECT_EQ(crossings(feature, {0.0}), 1.0);
}

TEST(ZeroCrossing, HasNoReset) {
    const std::unique_ptr<Math::SignalFeature> pFeature = std::make_unique<ZeroCrossingRateFeature>();
    EXPECT_EQ(dynamic_cast<Resettable*>(pFeature.get()), nullptr);
}

TEST(ZeroCrossing, SeveralWindowsAtOnceAreLinkedToo) {
    ZeroCrossingRateFeature feature;
    const std::vector<DoubleVector> windows{{1.0}, {-1.0, 1.0}, {}, {-1.0}};
    std::vector<DoubleVector> out(4);
    EXPECT_TRUE(feature.computeWindows(windows, out));
    EXPECT_THAT(out, ElementsAre(ElementsAre(0.0), ElementsAre(1.0), ElementsAre(0.0), ElementsAre(1.0)));
}

class ZeroCrossingConfiguration : public testing::Test {
protected:
    static LogRecord record(log4cplus::LogLevel level, const std::string& message) {
        return {"murvane.audio.AudioFeatureImpl", level, message, "AudioFeatureImpl"};
    }
    static LogRecord enter() { return record(log4cplus::TRACE_LOG_LEVEL, "ENTER: ZeroCrossingRateFeature::configure"); }
    static LogRecord exit() { return record(log4cplus::TRACE_LOG_LEVEL, "EXIT:  ZeroCrossingRateFeature::configure"); }

    ParameterTrie m_config;
    ZeroCrossingRateFeature m_feature;
    LogRecorder m_log{log4cplus::TRACE_LOG_LEVEL};
};

TEST_F(ZeroCrossingConfiguration, ReadsTheSampleRate) {
    m_config.setIntParameter("signalfeature.SampleRate", 8000);
    EXPECT_TRUE(m_feature.configure(m_config));
    m_config.setIntParameter("signalfeature.SampleRate", 1);
    EXPECT_TRUE(m_feature.configure(m_config));
    EXPECT_THAT(m_log.records(), ElementsAre(enter(), exit(), enter(), exit()));
}

TEST_F(ZeroCrossingConfiguration, NeedsTheSampleRate) {
    EXPECT_FALSE(m_feature.configure(m_config));
    EXPECT_THAT(m_log.records(),
                ElementsAre(enter(),
                            record(log4cplus::ERROR_LOG_LEVEL,
                                   "Could not find parameter signalfeature.SampleRate in configuration"),
                            exit()));
}

TEST_F(ZeroCrossingConfiguration, RefusesARateThatIsNotPositive) {
    for (const int rate : {0, -1, -8000, std::numeric_limits<int>::min()}) {
        m_config.setIntParameter("signalfeature.SampleRate", rate);
        EXPECT_FALSE(m_feature.configure(m_config)) << rate;
        EXPECT_THAT(m_log.take(), ElementsAre(enter(),
                                              record(log4cplus::ERROR_LOG_LEVEL,
                                                     "Invalid value in parameter signalfeature.SampleRate"),
                                              exit()))
            << rate;
    }
}

TEST_F(ZeroCrossingConfiguration, ARateThatIsNoIntegerIsAbsent) {
    m_config.setStringParameter("signalfeature.SampleRate", "fast");
    EXPECT_FALSE(m_feature.configure(m_config));
    EXPECT_THAT(m_log.records(),
                ElementsAre(enter(),
                            record(log4cplus::ERROR_LOG_LEVEL,
                                   "Could not find parameter signalfeature.SampleRate in configuration"),
                            exit()));
}

TEST_F(ZeroCrossingConfiguration, LeavesTheLastSample) {
    crossings(m_feature, {1.0});
    m_config.setIntParameter("signalfeature.SampleRate", 8000);
    EXPECT_TRUE(m_feature.configure(m_config));
    EXPECT_EQ(crossings(m_feature, {-1.0}), 1.0);
}

TEST(ZeroCrossing, ConfigureIsTracedOnlyWhereThatIsWanted) {
    const LogRecorder log;
    ZeroCrossingRateFeature feature;
    ParameterTrie config;
    config.setIntParameter("signalfeature.SampleRate", 8000);
    EXPECT_TRUE(feature.configure(config));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(ZeroCrossing, TellsItsName) {
    EXPECT_STREQ(ZeroCrossingRateFeature::getName(), "ZEROCROSSINGRATE");
    EXPECT_STREQ(ClippingRateFeature::getName(), "CLIPPINGRATE");
}

TEST(Clipping, EqualityClips) {
    EXPECT_EQ(clippingRate(-1.0, 1.0, {1.0, -1.0, 0.5, 2.0}), 0.75);
    EXPECT_EQ(clippingRate(-1.0, 1.0, {std::nextafter(1.0, 0.0), std::nextafter(-1.0, 0.0)}), 0.0);
}

TEST(Clipping, TheLowValueComesFirst) {
    EXPECT_EQ(clippingRate(-0.5, 1.0, {-0.75, -0.75}), 1.0);
    EXPECT_EQ(clippingRate(-1.0, 0.5, {-0.75, -0.75}), 0.0);
    EXPECT_EQ(clippingRate(-0.5, 1.0, {0.75, 0.75}), 0.0);
    EXPECT_EQ(clippingRate(-1.0, 0.5, {0.75, 0.75}), 1.0);
}

TEST(Clipping, ASampleBeyondBothValuesCountsOnce) {
    EXPECT_EQ(clippingRate(1.0, -1.0, {0.0, 5.0, -5.0}), 1.0);
}

TEST(Clipping, AnEmptyWindowIsNotANumber) {
    EXPECT_TRUE(std::isnan(clippingRate(-1.0, 1.0, {})));
}

TEST(Clipping, ASampleThatIsNotANumberIsNeverClipped) {
    EXPECT_EQ(clippingRate(-1.0, 1.0, {c_dNaN, c_dNaN, 2.0, c_dNaN}), 0.25);
    EXPECT_EQ(clippingRate(1.0, -1.0, {c_dNaN}), 0.0);
    EXPECT_EQ(clippingRate(c_dNaN, c_dNaN, {c_dInfinity, -c_dInfinity}), 0.0);
}

TEST(Clipping, InfinitiesAreClipped) {
    EXPECT_EQ(clippingRate(-1.0, 1.0, {c_dInfinity, -c_dInfinity}), 1.0);
    EXPECT_EQ(clippingRate(-c_dInfinity, c_dInfinity, {c_dInfinity, -c_dInfinity, 1e308, 0.0}), 0.5);
}

TEST(Clipping, AppendsOneValueAndKeepsNothingBetweenWindows) {
    ClippingRateFeature feature(-1.0, 1.0);
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({1.0, 0.0}, out));
    EXPECT_TRUE(feature.compute({1.0, 0.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 0.5, 0.5));
    EXPECT_TRUE(feature.compute(out, out));
    EXPECT_THAT(out, ElementsAre(9.0, 0.5, 0.5, 1.0 / 3.0));
}

TEST(Clipping, CopiesHaveTheSameValues) {
    ClippingRateFeature feature(-0.25, 0.5);
    const std::unique_ptr<Cloneable> pClone(feature.clone());
    auto* pFeature = dynamic_cast<ClippingRateFeature*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    ClippingRateFeature assigned(-9.0, 9.0);
    assigned = feature;
    for (ClippingRateFeature* pCopy : {pFeature, &assigned}) {
        DoubleVector out;
        EXPECT_TRUE(pCopy->compute({-0.25, 0.5, 0.0, 0.25}, out));
        EXPECT_THAT(out, ElementsAre(0.5));
    }
}

}  // namespace
