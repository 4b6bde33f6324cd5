#include <murvane/math/BasicFeatures.h>
#include <testkit/SpecialNumbers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

using namespace Zantrix::Math;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::c_dNaN;

namespace {

DoubleVector computed(SignalFeature& feature, const DoubleVector& in) {
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

template <class Feature>
std::unique_ptr<Feature> cloned(const Feature& feature) {
    return std::unique_ptr<Feature>(dynamic_cast<Feature*>(feature.clone()));
}

TEST(AmplitudeFeature, IsTheInputItself) {
    AmplitudeFeature feature;
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({1.0, -2.0, 0.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 1.0, -2.0, 0.0));
    EXPECT_THAT(computed(feature, {}), IsEmpty());
    EXPECT_TRUE(std::isnan(computed(feature, {c_dNaN})[0]));
}

TEST(AmplitudeFeature, AppendsACopyWhenInputAndOutputAreOne) {
    AmplitudeFeature feature;
    DoubleVector both{1.0, 2.0, 3.0};
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(1.0, 2.0, 3.0, 1.0, 2.0, 3.0));
}

TEST(MeanFeature, AppendsOneValue) {
    MeanFeature feature;
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({1.0, 2.0, 6.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 3.0));
    EXPECT_TRUE(feature.compute(out, out));
    EXPECT_THAT(out, ElementsAre(9.0, 3.0, 6.0));
}

TEST(MeanFeature, OfNothingIsZero) {
    MeanFeature feature;
    EXPECT_THAT(computed(feature, {}), ElementsAre(0.0));
}

TEST(TemporalMeanFeature, AveragesAllInputsSoFarValueByValue) {
    TemporalMeanFeature feature;
    EXPECT_THAT(computed(feature, {1.0, 10.0}), ElementsAre(1.0, 10.0));
    EXPECT_THAT(computed(feature, {3.0, 30.0}), ElementsAre(2.0, 20.0));
    EXPECT_THAT(computed(feature, {8.0, -40.0}), ElementsAre(4.0, 0.0));
}

TEST(TemporalMeanFeature, RefusesAnotherLengthAndDoesNotCountIt) {
    TemporalMeanFeature feature;
    computed(feature, {2.0, 4.0});
    DoubleVector out{9.0};
    EXPECT_FALSE(feature.compute({100.0}, out));
    EXPECT_FALSE(feature.compute({100.0, 100.0, 100.0}, out));
    EXPECT_FALSE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(9.0));
    EXPECT_THAT(computed(feature, {4.0, 8.0}), ElementsAre(3.0, 6.0));
}

TEST(TemporalMeanFeature, ResetForgetsValuesCountAndLength) {
    TemporalMeanFeature feature;
    computed(feature, {2.0, 4.0});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(computed(feature, {7.0, 8.0, 9.0}), ElementsAre(7.0, 8.0, 9.0));
    EXPECT_THAT(computed(feature, {9.0, 8.0, 7.0}), ElementsAre(8.0, 8.0, 8.0));
}

TEST(TemporalMeanFeature, AnEmptyFirstInputFixesTheLengthToo) {
    TemporalMeanFeature feature;
    EXPECT_THAT(computed(feature, {}), IsEmpty());
    DoubleVector out;
    EXPECT_FALSE(feature.compute({1.0}, out));
    EXPECT_THAT(out, IsEmpty());
}

TEST(TemporalMeanFeature, ComputesFromACopyWhenInputAndOutputAreOne) {
    TemporalMeanFeature feature;
    computed(feature, {1.0, 2.0});
    DoubleVector both{3.0, 6.0};
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(3.0, 6.0, 2.0, 4.0));
}

TEST(TemporalMeanFeature, CloneContinuesFromTheSameMemoryByItself) {
    TemporalMeanFeature feature;
    computed(feature, {2.0});
    const auto pClone = cloned(feature);
    ASSERT_NE(pClone, nullptr);
    EXPECT_THAT(computed(*pClone, {6.0}), ElementsAre(4.0));
    EXPECT_THAT(computed(feature, {0.0}), ElementsAre(1.0));
    EXPECT_THAT(computed(*pClone, {1.0}), ElementsAre(3.0));
}

TEST(SlidingWindowFeature, KeepsTheLastValuesOldestFirst) {
    SlidingWindowFeature feature(3);
    EXPECT_THAT(computed(feature, {1.0}), ElementsAre(1.0));
    EXPECT_THAT(computed(feature, {2.0}), ElementsAre(1.0, 2.0));
    EXPECT_THAT(computed(feature, {3.0}), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(computed(feature, {4.0}), ElementsAre(2.0, 3.0, 4.0));
    EXPECT_THAT(computed(feature, {}), ElementsAre(2.0, 3.0, 4.0));
}

TEST(SlidingWindowFeature, ManyValuesEnterInOrder) {
    SlidingWindowFeature feature(3);
    EXPECT_THAT(computed(feature, {1.0, 2.0}), ElementsAre(1.0, 2.0));
    EXPECT_THAT(computed(feature, {3.0, 4.0}), ElementsAre(2.0, 3.0, 4.0));
    EXPECT_THAT(computed(feature, {5.0, 6.0, 7.0, 8.0, 9.0}), ElementsAre(7.0, 8.0, 9.0));
    EXPECT_THAT(computed(feature, {10.0, 11.0, 12.0}), ElementsAre(10.0, 11.0, 12.0));
}

TEST(SlidingWindowFeature, OfLengthZeroAppendsNothing) {
    SlidingWindowFeature feature(0);
    EXPECT_THAT(computed(feature, {1.0, 2.0}), IsEmpty());
    EXPECT_THAT(computed(feature, {3.0}), IsEmpty());
}

TEST(SlidingWindowFeature, TheLargestLengthTakesNoStorageInAdvance) {
    SlidingWindowFeature feature(std::numeric_limits<std::size_t>::max());
    EXPECT_THAT(computed(feature, {1.0, 2.0}), ElementsAre(1.0, 2.0));
    EXPECT_THAT(computed(feature, {3.0}), ElementsAre(1.0, 2.0, 3.0));
}

TEST(SlidingWindowFeature, ResetForgetsTheValuesAndKeepsTheLength) {
    SlidingWindowFeature feature(2);
    computed(feature, {1.0, 2.0});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(computed(feature, {3.0}), ElementsAre(3.0));
    EXPECT_THAT(computed(feature, {4.0, 5.0}), ElementsAre(4.0, 5.0));
}

TEST(SlidingWindowFeature, AppendsBehindTheInputWhenInputAndOutputAreOne) {
    SlidingWindowFeature feature(2);
    DoubleVector both{1.0, 2.0, 3.0};
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(1.0, 2.0, 3.0, 2.0, 3.0));
}

TEST(SlidingWindowFeature, CloneContinuesFromTheSameMemoryByItself) {
    SlidingWindowFeature feature(2);
    computed(feature, {1.0, 2.0});
    const auto pClone = cloned(feature);
    ASSERT_NE(pClone, nullptr);
    EXPECT_THAT(computed(*pClone, {3.0}), ElementsAre(2.0, 3.0));
    EXPECT_THAT(computed(feature, {4.0}), ElementsAre(2.0, 4.0));
}

TEST(SignalFeature, ComputesWindowsInTheirOrderAndStopsAtTheFirstThatFails) {
    TemporalMeanFeature feature;
    const std::vector<DoubleVector> in{{1.0}, {3.0}, {1.0, 1.0}, {5.0}};
    std::vector<DoubleVector> out(4, DoubleVector{-1.0});
    EXPECT_FALSE(feature.computeWindows(in, out));
    EXPECT_THAT(out[0], ElementsAre(-1.0, 1.0));
    EXPECT_THAT(out[1], ElementsAre(-1.0, 2.0));
    EXPECT_THAT(out[3], ElementsAre(-1.0));
    EXPECT_TRUE(feature.reset());
    EXPECT_TRUE(feature.computeWindows(std::span(in).first(2), std::span(out).first(2)));
    EXPECT_THAT(out[1], ElementsAre(-1.0, 2.0, 2.0));
    EXPECT_TRUE(feature.computeWindows({}, {}));
}

}  // namespace
