#include "FeatureTesting.h"

#include <murvane/audio/features/EnergyFeatures.h>

using namespace featuretesting;
using testing::ElementsAre;
using testing::IsEmpty;
using Zantrix::Audio::EnergyHistogramFeature;
using Zantrix::Audio::MeanEnergyAboveThreshFeature;
using Zantrix::Audio::MeanMaxFeature;

TEST(EnergyHistogram, NameIsThatOfItsType) {
    EXPECT_STREQ(EnergyHistogramFeature::getName(), "ENERGYHISTOGRAM");
}

TEST(EnergyHistogram, CountsSamplesByEnergy) {
    EnergyHistogramFeature feature(1.0, 4);
    EXPECT_THAT(valuesOf(feature, {0.0, 0.5, 0.9, 1.5}), ElementsAre(1.0, 1.0, 0.0, 2.0));
}

TEST(EnergyHistogram, EachWindowIsCountedAnew) {
    EnergyHistogramFeature feature(1.0, 2);
    valuesOf(feature, {0.0, 0.0, 1.0});
    EXPECT_THAT(valuesOf(feature, {0.1}), ElementsAre(1.0, 0.0));
}

TEST(EnergyHistogram, EmptyWindowGivesZeros) {
    EnergyHistogramFeature feature(1.0, 3);
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(0.0, 0.0, 0.0));
}

TEST(EnergyHistogram, EverythingAtOrBeyondTheTopAndNaNCountsInTheLastBin) {
    EnergyHistogramFeature feature(1.0, 4);
    EXPECT_THAT(valuesOf(feature, {1.0, -1.0, 1e10, 1e150, 1e300, -1e300, c_dInfinity, -c_dInfinity, c_dNaN}),
                ElementsAre(0.0, 0.0, 0.0, 9.0));
}

TEST(EnergyHistogram, EdgeOfABinBelongsToTheBinAbove) {
    EnergyHistogramFeature feature(4.0, 4);
    EXPECT_THAT(valuesOf(feature, {std::sqrt(0.99), 1.0, -1.0}), ElementsAre(1.0, 2.0, 0.0, 0.0));
}

TEST(EnergyHistogram, SingleBinTakesEverySample) {
    EnergyHistogramFeature feature(1.0, 1);
    EXPECT_THAT(valuesOf(feature, {0.0, 0.5, 2.0, c_dNaN}), ElementsAre(4.0));
}

TEST(EnergyHistogram, ExtremeMaximaStayWithinTheBins) {
    EnergyHistogramFeature tiny(std::numeric_limits<double>::denorm_min(), 4);
    EXPECT_THAT(valuesOf(tiny, {0.0, 1e-200, 1.0}), ElementsAre(2.0, 0.0, 0.0, 1.0));
    EnergyHistogramFeature infinite(c_dInfinity, 4);
    EXPECT_THAT(valuesOf(infinite, {0.0, 1.0, 1e300}), ElementsAre(2.0, 0.0, 0.0, 1.0));
}

TEST(EnergyHistogram, MoreBinsThanMemoryCouldHoldFailWithAnError) {
    EnergyHistogramFeature feature(1.0, 1ULL << 62);
    const testkit::LogRecorder recorder;
    DoubleVector out = {3.0};
    EXPECT_FALSE(feature.compute({0.5}, out));
    EXPECT_THAT(out, ElementsAre(3.0));
    ASSERT_EQ(recorder.records().size(), 1U);
    EXPECT_EQ(recorder.records()[0].level, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_THAT(recorder.records()[0].message,
                testing::StartsWith("Could not make a histogram of 4611686018427387904 bins: "));
}

TEST(EnergyHistogram, WithoutBinsFailsTheAssertion) {
    EnergyHistogramFeature feature(1.0, 0);
    const testkit::LogRecorder recorder;
    DoubleVector out = {3.0};
    EXPECT_FALSE(feature.compute({0.5}, out));
    EXPECT_THAT(out, ElementsAre(3.0));
    EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("m_uiNbOfBins > 0")));
}

TEST(EnergyHistogram, MaximumThatIsNotPositiveFailsTheAssertion) {
    for (const double maximum : {0.0, -1.0, c_dNaN}) {
        EnergyHistogramFeature feature(maximum, 4);
        const testkit::LogRecorder recorder;
        DoubleVector out;
        EXPECT_FALSE(feature.compute({0.5}, out));
        EXPECT_THAT(out, IsEmpty());
        EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("m_dEnergyMaxValue > 0")));
    }
}

TEST(EnergyHistogram, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(EnergyHistogramFeature(1.0, 4));
    expectFeatureManners(EnergyHistogramFeature(1.0, 0));
}

TEST(MeanEnergyAboveThresh, IsTheMeanOfTheEnergiesStrictlyAbove) {
    MeanEnergyAboveThreshFeature feature(0.1);
    EXPECT_THAT(valuesOf(feature, {0.5, 0.1, -1.0}), ElementsAre(0.625));
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(0.625));
    EXPECT_THAT(valuesOf(feature, {2.0}), ElementsAre(1.75));
}

TEST(MeanEnergyAboveThresh, EnergyAtTheThresholdIsNotAbove) {
    MeanEnergyAboveThreshFeature feature(0.25);
    EXPECT_THAT(valuesOf(feature, {0.5, -0.5}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, {1.0}), ElementsAre(1.0));
}

TEST(MeanEnergyAboveThresh, IsZeroBeforeAnySampleIsAbove) {
    MeanEnergyAboveThreshFeature feature(0.1);
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, {0.0, c_dNaN}), ElementsAre(0.0));
}

TEST(MeanEnergyAboveThresh, ResetForgetsTheSamplesAndKeepsTheThreshold) {
    MeanEnergyAboveThreshFeature feature(0.1);
    valuesOf(feature, {1.0});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, {0.1, 0.5}), ElementsAre(0.25));
}

TEST(MeanEnergyAboveThresh, CloneTakenInMidStreamGoesOnAlikeAndAlone) {
    MeanEnergyAboveThreshFeature feature(0.1);
    valuesOf(feature, {1.0});
    const auto pClone = cloneOf(feature);
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(*pClone, {2.0}), ElementsAre(2.5));
    EXPECT_THAT(valuesOf(feature, {2.0}), ElementsAre(4.0));
}

TEST(MeanEnergyAboveThresh, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(MeanEnergyAboveThreshFeature(0.1));
    expectFeatureManners(MeanEnergyAboveThreshFeature(c_dNaN));
}

TEST(MeanMax, EmptyFirstWindowGivesMinusOneTwice) {
    MeanMaxFeature feature(4, 0.0);
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(-1.0, -1.0));
}

TEST(MeanMax, GivesTheOpenMaximumTwiceUntilASegmentCloses) {
    MeanMaxFeature feature(4, 0.0);
    EXPECT_THAT(valuesOf(feature, {0.25, -0.5}), ElementsAre(0.5, 0.5));
    // The third sample closes the segment and already belongs to the next.
    EXPECT_THAT(valuesOf(feature, {0.75}), ElementsAre(0.5, 0.5));
    EXPECT_THAT(valuesOf(feature, {0.125, 0.125}), ElementsAre(0.5, 0.5));
    EXPECT_THAT(valuesOf(feature, {0.0}), ElementsAre((0.5 + 0.75) / 2.0, 0.5));
}

TEST(MeanMax, StepOfATenthClosesWhereItsSumRoundsAboveOneHalf) {
    // Five tenths add up to exactly one half: the sixth sample closes.
    MeanMaxFeature tenth(10, 0.0);
    EXPECT_THAT(valuesOf(tenth, {1, 2, 3, 4, 5}), ElementsAre(5.0, 5.0));
    EXPECT_THAT(valuesOf(tenth, {9}), ElementsAre(5.0, 5.0));
    EXPECT_THAT(valuesOf(tenth, {0, 0, 0, 0, 0}), ElementsAre(5.0, 5.0));
    EXPECT_THAT(valuesOf(tenth, {0}), ElementsAre(7.0, 5.0));
}

TEST(MeanMax, MaximumOfMoreThanTwiceTheMeanStartsAnew) {
    // n = 2: every second sample closes a segment. Maxima: 1, 2 (exactly twice: accepted), 4 (above 3): anew.
    MeanMaxFeature feature(2, 0.0);
    EXPECT_THAT(valuesOf(feature, {1.0, 2.0}), ElementsAre(1.0, 1.0));
    EXPECT_THAT(valuesOf(feature, {0.0, 4.0}), ElementsAre(1.5, 1.0));
    EXPECT_THAT(valuesOf(feature, {0.0, 0.0}), ElementsAre(4.0, 4.0));
}

TEST(MeanMax, MaximumBelowHalfTheMeanIsIgnored) {
    // Maxima: 4, 2 (exactly half: accepted), 1 (below 1.5): ignored.
    MeanMaxFeature feature(2, 0.0);
    EXPECT_THAT(valuesOf(feature, {4.0, 2.0}), ElementsAre(4.0, 4.0));
    EXPECT_THAT(valuesOf(feature, {0.0, 1.0}), ElementsAre(3.0, 2.0));
    EXPECT_THAT(valuesOf(feature, {0.0, 0.0}), ElementsAre(3.0, 2.0));
}

TEST(MeanMax, HeightsAreMeasuredFromTheAbsoluteFloor) {
    // 2.75 is less than twice 1.5, but its height above 1 is more than twice that of 1.5.
    const DoubleVector window = {1.5, 2.75, 0.0, 0.0};
    MeanMaxFeature none(2, 0.0);
    EXPECT_THAT(valuesOf(none, window), ElementsAre(2.125, 1.5));
    for (const double floor : {1.0, -1.0}) {
        MeanMaxFeature feature(2, floor);
        EXPECT_THAT(valuesOf(feature, window), ElementsAre(2.75, 2.75));
    }
    // And 1.5 is more than half of 2.75, but its height is less than half.
    MeanMaxFeature gap(2, 1.0);
    EXPECT_THAT(valuesOf(gap, {2.75, 1.5, 0.0, 0.0}), ElementsAre(2.75, 2.75));
}

TEST(MeanMax, StepOfOneClosesTheEmptyFirstSegment) {
    // Nothing came before the first sample: the segment that it closes has the maximum -1. Any amplitude is more than
    // twice that, so the next segment starts anew.
    MeanMaxFeature feature(1, 0.0);
    EXPECT_THAT(valuesOf(feature, {0.5}), ElementsAre(-1.0, -1.0));
    EXPECT_THAT(valuesOf(feature, {0.5}), ElementsAre(0.5, 0.5));
    MeanMaxFeature infiniteStep(0, 0.0);
    EXPECT_THAT(valuesOf(infiniteStep, {0.5, 0.5}), ElementsAre(0.5, 0.5));
}

TEST(MeanMax, ResetForgetsTheSegments) {
    MeanMaxFeature feature(4, 0.0);
    valuesOf(feature, {0.25, 0.5, 0.75});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(-1.0, -1.0));
    EXPECT_THAT(valuesOf(feature, {0.25, 0.5}), ElementsAre(0.5, 0.5));
    EXPECT_THAT(valuesOf(feature, {0.75}), ElementsAre(0.5, 0.5));
}

TEST(MeanMax, AnyCutOfTheSignalGivesTheSame) {
    DoubleVector signal;
    for (int i = 0; i < 200; ++i) {
        signal.push_back(std::sin(0.37 * i) * (1.0 + 0.01 * i));
    }
    MeanMaxFeature whole(10, 0.01);
    const DoubleVector expected = valuesOf(whole, signal);
    for (const std::size_t cut : {1, 7, 64}) {
        MeanMaxFeature feature(10, 0.01);
        DoubleVector values;
        for (std::size_t start = 0; start < signal.size(); start += cut) {
            const std::size_t end = std::min(start + cut, signal.size());
            values = valuesOf(feature, DoubleVector(signal.data() + start, signal.data() + end));
        }
        EXPECT_THAT(values, IsIdenticalTo(expected)) << cut;
    }
}

TEST(MeanMax, CloneTakenInMidStreamGoesOnAlikeAndAlone) {
    MeanMaxFeature feature(4, 0.0);
    valuesOf(feature, {0.25, 0.5, 0.75, 0.5});
    const auto pClone = cloneOf(feature);
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(*pClone, {0.0, 0.0}), ElementsAre(0.625, 0.5));
    EXPECT_THAT(valuesOf(feature, {0.0, 0.0}), ElementsAre(0.0, 0.0));
}

TEST(MeanMax, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(MeanMaxFeature(4, 0.0));
    expectFeatureManners(MeanMaxFeature(0, c_dNaN));
}
