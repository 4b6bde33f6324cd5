#include "FeatureTesting.h"

#include <murvane/audio/features/NeighbourhoodFeatures.h>

#include <utility>

using namespace featuretesting;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using Zantrix::Audio::DeltaToSlidingMeanFeature;
using Zantrix::Audio::MaxNeighbourhoodFeature;
using Zantrix::Audio::MyFeature;

TEST(MaxNeighbourhood, NamesAreThoseOfTheirTypes) {
    EXPECT_STREQ(MaxNeighbourhoodFeature::getName(), "NEIGHBOURHOODOFMAX");
    EXPECT_STREQ(DeltaToSlidingMeanFeature::getName(), "DELTATOSLIDINGMEAN");
    EXPECT_STREQ(MyFeature::getName(), "MYFEATURE");
}

TEST(MaxNeighbourhood, MaximumStandsInTheMiddle) {
    MaxNeighbourhoodFeature feature;
    EXPECT_THAT(valuesOf(feature, {1, 5, 2, 0}), ElementsAre(1.0, 5.0, 2.0));
    EXPECT_THAT(valuesOf(feature, {0, 1, 5, 2}), ElementsAre(1.0, 5.0, 2.0));
}

TEST(MaxNeighbourhood, MaximumAtTheStartGivesTheFirstThree) {
    MaxNeighbourhoodFeature feature;
    EXPECT_THAT(valuesOf(feature, {5, 1, 2, 0}), ElementsAre(5.0, 1.0, 2.0));
}

TEST(MaxNeighbourhood, MaximumAtTheEndGivesTheLastThree) {
    MaxNeighbourhoodFeature feature;
    EXPECT_THAT(valuesOf(feature, {0, 1, 2, 5}), ElementsAre(1.0, 2.0, 5.0));
}

TEST(MaxNeighbourhood, OfEqualMaximaTheFirstCounts) {
    MaxNeighbourhoodFeature feature;
    EXPECT_THAT(valuesOf(feature, {0, 1, 5, 2, 5, 3}), ElementsAre(1.0, 5.0, 2.0));
}

TEST(MaxNeighbourhood, ValuesAreComparedWithTheirSigns) {
    MaxNeighbourhoodFeature feature;
    EXPECT_THAT(valuesOf(feature, {-9, -3, -1, -2, -8}), ElementsAre(-3.0, -1.0, -2.0));
}

TEST(MaxNeighbourhood, FewerThanFourValuesFailWithoutARecord) {
    MaxNeighbourhoodFeature feature;
    const testkit::LogRecorder recorder;
    DoubleVector out = {7.0};
    for (const std::size_t size : {0, 1, 2, 3}) {
        EXPECT_FALSE(feature.compute(DoubleVector(size, 1.0), out));
    }
    EXPECT_THAT(out, ElementsAre(7.0));
    EXPECT_THAT(recorder.records(), IsEmpty());
}

TEST(MaxNeighbourhood, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(MaxNeighbourhoodFeature());
}

TEST(DeltaToSlidingMean, SubtractsTheMeanOfTheLastFiveInputsTheCurrentOneIncluded) {
    DeltaToSlidingMeanFeature feature;
    EXPECT_THAT(valuesOf(feature, {8.0}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, {4.0}), ElementsAre(4.0 - 6.0));
    EXPECT_THAT(valuesOf(feature, {3.0}), ElementsAre(3.0 - 5.0));
    EXPECT_THAT(valuesOf(feature, {1.0}), ElementsAre(1.0 - 4.0));
    EXPECT_THAT(valuesOf(feature, {4.0}), ElementsAre(4.0 - 4.0));
    // The 8 leaves the window.
    EXPECT_THAT(valuesOf(feature, {13.0}), ElementsAre(13.0 - 5.0));
}

TEST(DeltaToSlidingMean, ConstantInputGivesZeroOnceTheWindowIsFull) {
    DeltaToSlidingMeanFeature feature;
    for (int i = 0; i < 8; ++i) {
        const DoubleVector values = valuesOf(feature, {0.3});
        if (i >= 4) {
            EXPECT_THAT(values, ElementsAre(DoubleNear(0.0, 1e-16)));
        }
    }
}

TEST(DeltaToSlidingMean, InputOfAnyOtherLengthFailsTheAssertionAndIsNotRemembered) {
    DeltaToSlidingMeanFeature feature;
    valuesOf(feature, {8.0});
    for (const std::size_t size : {0, 2, 3}) {
        const testkit::LogRecorder recorder;
        DoubleVector out = {7.0};
        EXPECT_FALSE(feature.compute(DoubleVector(size, 1.0), out));
        EXPECT_THAT(out, ElementsAre(7.0));
        EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("in_vInput.size() == 1")));
    }
    EXPECT_THAT(valuesOf(feature, {4.0}), ElementsAre(4.0 - 6.0));
}

TEST(DeltaToSlidingMean, ResetForgetsTheInputs) {
    DeltaToSlidingMeanFeature feature;
    valuesOf(feature, {8.0});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(feature, {4.0}), ElementsAre(0.0));
}

TEST(DeltaToSlidingMean, MovedFromObjectFailsTheAssertionUntilReset) {
    DeltaToSlidingMeanFeature feature;
    valuesOf(feature, {8.0});
    DeltaToSlidingMeanFeature other(std::move(feature));
    EXPECT_THAT(valuesOf(other, {4.0}), ElementsAre(4.0 - 6.0));

    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute({4.0}, out));  // NOLINT(bugprone-use-after-move): what this is about
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("!m_pSlidingMeanFeature.isNull()")));
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(valuesOf(feature, {4.0}), ElementsAre(0.0));
}

TEST(DeltaToSlidingMean, CloneTakenInMidStreamGoesOnAlikeAndAlone) {
    DeltaToSlidingMeanFeature feature;
    valuesOf(feature, {8.0});
    valuesOf(feature, {4.0});
    const auto pClone = cloneOf(feature);
    EXPECT_THAT(valuesOf(*pClone, {3.0}), ElementsAre(3.0 - 5.0));
    EXPECT_THAT(valuesOf(*pClone, {30.0}), ElementsAre(30.0 - 11.25));
    EXPECT_THAT(valuesOf(feature, {3.0}), ElementsAre(3.0 - 5.0));
}

TEST(DeltaToSlidingMean, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(DeltaToSlidingMeanFeature());
}

TEST(MyFeature, LeavesTheOutputUnchangedAndSucceeds) {
    MyFeature feature;
    DoubleVector out = {1.0, 2.0};
    EXPECT_TRUE(feature.compute(risingSpectrum(8), out));
    EXPECT_TRUE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0));
    expectFeatureManners(feature);
}
