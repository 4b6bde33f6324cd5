#include "FeatureTesting.h"

#include <murvane/audio/features/SilenceRatioFeatures.h>

using namespace featuretesting;
using testing::Each;
using testing::ElementsAre;
using testing::IsNan;
using testing::SizeIs;
using Zantrix::Audio::RatiosFeature;
using Zantrix::Audio::SilenceRatioFeature;
using Zantrix::Audio::SilenceRatioFeatureT;

TEST(SilenceRatio, NamesAreThoseOfTheirTypesAndFunction) {
    EXPECT_STREQ(SilenceRatioFeature::getName(), "SILENCERATIO");
    EXPECT_STREQ(SilenceRatioFeatureT<50>::getName(), "SILENCERATIO");
    EXPECT_STREQ(SilenceRatioFeatureT<50>::sGetXprName(), "silenceRatio");
    EXPECT_STREQ(RatiosFeature::getName(), "AMPLITUDEDISTRIBUTION");
}

TEST(SilenceRatio, CountsSamplesStrictlyBelowAShareOfThePeak) {
    SilenceRatioFeature feature(50);
    EXPECT_THAT(valuesOf(feature, {1.0, 0.01, -0.019, 0.02}), ElementsAre(0.5));
}

TEST(SilenceRatio, PeakIsTheLargestAbsoluteSample) {
    SilenceRatioFeature feature(10);
    EXPECT_THAT(valuesOf(feature, {-2.0, 0.19, 0.5, 0.2}), ElementsAre(0.25));
}

TEST(SilenceRatio, AllZeroWindowIsNotSilent) {
    SilenceRatioFeature feature(50);
    EXPECT_THAT(valuesOf(feature, DoubleVector(8, 0.0)), ElementsAre(0.0));
}

TEST(SilenceRatio, EmptyWindowGivesNaN) {
    SilenceRatioFeature feature(50);
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(IsNan()));
}

TEST(SilenceRatio, DivisorZeroCountsEverySampleOfAWindowThatIsNotSilent) {
    SilenceRatioFeature feature;
    EXPECT_THAT(valuesOf(feature, {1.0, 0.0, -0.5}), ElementsAre(1.0));
    EXPECT_THAT(valuesOf(feature, {0.0, 0.0}), ElementsAre(0.0));
}

TEST(SilenceRatio, NaNIsNeverSilent) {
    SilenceRatioFeature feature(2);
    EXPECT_THAT(valuesOf(feature, {1.0, 0.1, c_dNaN, 0.1}), ElementsAre(0.5));
    EXPECT_THAT(valuesOf(feature, {c_dNaN}), ElementsAre(0.0));
}

TEST(SilenceRatio, FixedVariantEqualsTheDivisorItIsNamedAfter) {
    SilenceRatioFeatureT<50> fixed;
    EXPECT_THAT(valuesOf(fixed, {1.0, 0.01, -0.019, 0.02}), ElementsAre(0.5));
    EXPECT_THAT(valuesOf(*cloneOf(fixed), {1.0, 0.01, -0.019, 0.02}), ElementsAre(0.5));
}

TEST(SilenceRatio, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(SilenceRatioFeature(50));
    expectFeatureManners(SilenceRatioFeature());
    expectFeatureManners(SilenceRatioFeatureT<50>());
}

TEST(Ratios, GradeAmplitudesInFourBandsBelowThePeak) {
    RatiosFeature feature(false);
    EXPECT_THAT(valuesOf(feature, {1.0, 0.15, 0.05, 0.0}), ElementsAre(0.25, 0.25, 0.25, 0.25));
    EXPECT_THAT(valuesOf(feature, {-1.0, -0.15, -0.15, -0.01}), ElementsAre(0.25, 0.5, 0.0, 0.25));
}

TEST(Ratios, AmplitudeAtAThresholdBelongsToTheBandBelow) {
    RatiosFeature feature(false);
    const double peak = 1.0;
    EXPECT_THAT(valuesOf(feature, {peak, peak / 5.0, peak / 10.0, peak / 50.0}), ElementsAre(0.25, 0.25, 0.25, 0.25));
}

TEST(Ratios, SilenceLiesInTheFourthBand) {
    RatiosFeature feature(false);
    EXPECT_THAT(valuesOf(feature, DoubleVector(4, 0.0)), ElementsAre(0.0, 0.0, 0.0, 1.0));
}

TEST(Ratios, NaNLiesInTheFourthBand) {
    RatiosFeature feature(false);
    EXPECT_THAT(valuesOf(feature, {1.0, c_dNaN, 1.0, 1.0}), ElementsAre(0.75, 0.0, 0.0, 0.25));
}

TEST(Ratios, EmptyWindowGivesFourNaN) {
    RatiosFeature feature(false);
    EXPECT_THAT(valuesOf(feature, {}), testing::AllOf(SizeIs(4), Each(IsNan())));
}

TEST(Ratios, TemporalOnesMeasureAgainstTheLargestPeakUntilReset) {
    RatiosFeature feature(true);
    const DoubleVector quiet = {0.1, 0.05, 0.015, 0.001};
    EXPECT_THAT(valuesOf(feature, {1.0, 0.0}), ElementsAre(0.5, 0.0, 0.0, 0.5));
    EXPECT_THAT(valuesOf(feature, quiet), ElementsAre(0.0, 0.0, 0.5, 0.5));
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(feature, quiet), ElementsAre(0.5, 0.25, 0.0, 0.25));
}

TEST(Ratios, OthersForgetThePeak) {
    RatiosFeature feature(false);
    valuesOf(feature, {1.0, 0.0});
    EXPECT_THAT(valuesOf(feature, {0.1, 0.05}), ElementsAre(1.0, 0.0, 0.0, 0.0));
    EXPECT_TRUE(feature.reset());
}

TEST(Ratios, EmptyWindowAndNaNLeaveTheRunningPeak) {
    RatiosFeature feature(true);
    valuesOf(feature, {1.0});
    valuesOf(feature, {});
    EXPECT_THAT(valuesOf(feature, {c_dNaN}), ElementsAre(0.0, 0.0, 0.0, 1.0));
    EXPECT_THAT(valuesOf(feature, {0.15}), ElementsAre(0.0, 1.0, 0.0, 0.0));
}

TEST(Ratios, CloneTakenInMidStreamGoesOnAlikeAndAlone) {
    RatiosFeature feature(true);
    valuesOf(feature, {1.0});
    const auto pClone = cloneOf(feature);
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(*pClone, {0.15}), ElementsAre(0.0, 1.0, 0.0, 0.0));
    EXPECT_THAT(valuesOf(feature, {0.15}), ElementsAre(1.0, 0.0, 0.0, 0.0));
}

TEST(Ratios, KeepTheirMannersWithAnyInput) {
    expectFeatureManners(RatiosFeature(false));
    expectFeatureManners(RatiosFeature(true));
}
