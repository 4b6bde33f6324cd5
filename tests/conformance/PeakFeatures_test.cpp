#include "FeatureTesting.h"

#include <murvane/audio/features/PeakFeatures.h>

using namespace featuretesting;
using testing::ElementsAre;
using testing::IsEmpty;
using Zantrix::Audio::NonLogPeaksFeature;
using Zantrix::Audio::PeaksFeature;
using Zantrix::Audio::PonderatedPeaksFeature;

namespace {

// Heights and plain indices of the `count` highest peaks.
DoubleVector peaksOf(std::size_t count, const DoubleVector& in) {
    PeaksFeature feature;
    DoubleVector out;
    EXPECT_TRUE(feature.compute_i(count, false, in, out));
    return out;
}

}  // namespace

TEST(Peaks, NamesAreThoseOfTheirTypesAndFunctions) {
    EXPECT_STREQ(PeaksFeature::getName(), "PEAKS");
    EXPECT_STREQ(PeaksFeature::sGetXprName(), "peaks");
    EXPECT_STREQ(PonderatedPeaksFeature::sGetXprName(), "ponderatedPeaks");
    EXPECT_STREQ(NonLogPeaksFeature::getName(), "???Feature_FeatureType???");
    EXPECT_STREQ(NonLogPeaksFeature::sGetXprName(), "nonLogPeaks");
}

TEST(Peaks, ReportsHeightsThenLogPositionsHighestFirst) {
    PeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, {0, 1, 5, 1, 0, 0, 3, 0}),
                ElementsAre(5.0, 3.0, 0.0, std::log(2.0), std::log(6.0), std::log(1e-6)));
}

TEST(Peaks, PositionZeroCountsAsOneMillionth) {
    PeaksFeature feature;
    const DoubleVector values = valuesOf(feature, {9.0, 1.0, 0.5, 0.25});
    EXPECT_EQ(values[0], 9.0);
    EXPECT_NEAR(values[3], -13.8155, 1e-4);
}

TEST(Peaks, NegativeValuesCountByTheirAbsoluteValue) {
    EXPECT_THAT(peaksOf(2, {0, 0, -5, 0, 0, 4, 0}), ElementsAre(5.0, 4.0, 2.0, 5.0));
}

TEST(Peaks, FirstOfEqualMaximaComesFirst) {
    EXPECT_THAT(peaksOf(2, {0, 0, 3, 0, 0, 3, 0}), ElementsAre(3.0, 3.0, 2.0, 5.0));
}

TEST(Peaks, WalkStopsWhereTwoValuesDoNotFall) {
    // Right of the 9: 4 falls, 5 and 6 do not, so they stay and 6 is the next peak.
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 5, 6, 0, 0}), ElementsAre(9.0, 6.0, 2.0, 5.0));
    // The same to the left.
    EXPECT_THAT(peaksOf(2, {0, 0, 6, 5, 4, 9, 0, 0}), ElementsAre(9.0, 6.0, 5.0, 2.0));
}

TEST(Peaks, SingleRisingSampleIsSteppedOver) {
    // 5 rises above 4, but 3 falls below 4 again: all of it is one lobe.
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 5, 3, 0, 0}), ElementsAre(9.0, 0.0, 2.0, 0.0));
    EXPECT_THAT(peaksOf(2, {0, 0, 0, 3, 5, 4, 9, 0}), ElementsAre(9.0, 0.0, 6.0, 0.0));
}

TEST(Peaks, RiseThatDoesNotFallBelowWhereItBeganEndsTheLobe) {
    // 4.5 lies below the 5 but not below the 4: the 5 is a peak of its own.
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 5, 4.5, 0, 0}), ElementsAre(9.0, 5.0, 2.0, 4.0));
    EXPECT_THAT(peaksOf(2, {0, 0, 4.5, 5, 4, 9, 0, 0}), ElementsAre(9.0, 5.0, 5.0, 3.0));
}

TEST(Peaks, EqualNeighboursStopTheWalk) {
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 4, 4, 0, 0}), ElementsAre(9.0, 4.0, 2.0, 4.0));
}

TEST(Peaks, ZeroingTheSecondElementZeroesTheFirstUnseen) {
    // The 8 at the start rises again, yet it goes with its neighbour.
    EXPECT_THAT(peaksOf(2, {8, 1, 9, 0, 0, 2, 0}), ElementsAre(9.0, 2.0, 2.0, 5.0));
}

TEST(Peaks, PeakAtTheSecondElementErasesTheFirst) {
    EXPECT_THAT(peaksOf(2, {8, 9, 0, 0, 2, 0}), ElementsAre(9.0, 2.0, 1.0, 4.0));
}

TEST(Peaks, LastElementHasNoFallingNeighbour) {
    // The 5 after the 4 is the last: nothing falls behind it, so it stays as a peak of its own.
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 5}), ElementsAre(9.0, 5.0, 2.0, 4.0));
    EXPECT_THAT(peaksOf(2, {0, 0, 9, 4, 3}), ElementsAre(9.0, 0.0, 2.0, 0.0));
}

TEST(Peaks, PeakAtEitherEndWalksOneWay) {
    EXPECT_THAT(peaksOf(2, {9, 4, 0, 0, 2, 0}), ElementsAre(9.0, 2.0, 0.0, 4.0));
    EXPECT_THAT(peaksOf(2, {0, 2, 0, 0, 4, 9}), ElementsAre(9.0, 2.0, 5.0, 1.0));
}

TEST(Peaks, MissingPeaksHaveHeightZeroAtIndexZero) {
    EXPECT_THAT(peaksOf(3, {0, 0, 0, 0}), ElementsAre(0.0, 0.0, 0.0, 0.0, 0.0, 0.0));
    EXPECT_THAT(peaksOf(3, {2}), ElementsAre(2.0, 0.0, 0.0, 0.0, 0.0, 0.0));
    EXPECT_THAT(peaksOf(3, {1, 2}), ElementsAre(2.0, 0.0, 0.0, 1.0, 0.0, 0.0));
}

TEST(Peaks, NoPeaksAskedForGiveNothing) {
    EXPECT_THAT(peaksOf(0, {1, 2, 3}), IsEmpty());
}

TEST(Peaks, EmptyInputFailsAndAppendsNothing) {
    PeaksFeature peaks;
    PonderatedPeaksFeature ponderated;
    NonLogPeaksFeature nonLog;
    const testkit::LogRecorder recorder;
    DoubleVector out = {1.0, 2.0, 3.0, 4.0};
    EXPECT_FALSE(peaks.compute({}, out));
    EXPECT_FALSE(ponderated.compute({}, out));
    EXPECT_FALSE(nonLog.compute({}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0, 3.0, 4.0));
    EXPECT_THAT(recorder.records(), IsEmpty());
}

TEST(Peaks, KeepTheirMannersWithAnyInput) {
    expectFeatureManners(PeaksFeature());
}

TEST(PonderatedPeaks, NormalisedSpectrumGivesHeightsTimesItsLength) {
    DoubleVector spectrum(128, 0.0);
    spectrum[20] = 0.5;
    spectrum[40] = 0.25;
    spectrum[60] = 0.25;
    PonderatedPeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, spectrum), ElementsAre(64.0, 32.0, 32.0));
}

TEST(PonderatedPeaks, DividesByTheMeanOfTheInputAsItIs) {
    // The mean takes the signs into account, the peaks do not.
    PonderatedPeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, {0, 0, -6, 0, 0, 2, 0, 0}), ElementsAre(-12.0, -4.0, -0.0));
}

TEST(PonderatedPeaks, MeanOfZeroGivesZeros) {
    PonderatedPeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, {0, 0, -6, 0, 0, 6, 0, 0}), ElementsAre(0.0, 0.0, 0.0));
    EXPECT_THAT(valuesOf(feature, {0.0}), ElementsAre(0.0, 0.0, 0.0));
}

TEST(PonderatedPeaks, KeepsTheFirstThreeValuesOfTheOutput) {
    PonderatedPeaksFeature feature;
    DoubleVector out = {10.0, 20.0};
    EXPECT_TRUE(feature.compute({0, 0, 4, 0}, out));
    EXPECT_THAT(out, ElementsAre(10.0, 20.0, 4.0));
    out = {1.0, 2.0, 3.0, 4.0};
    EXPECT_TRUE(feature.compute({0, 0, 2, 0}, out));
    EXPECT_THAT(out, ElementsAre(2.0, 4.0, 6.0));
}

TEST(PonderatedPeaks, InputMayBeTheOutput) {
    PonderatedPeaksFeature feature;
    DoubleVector inOut = {0, 0, 8, 0};
    EXPECT_TRUE(feature.compute(inOut, inOut));
    EXPECT_THAT(inOut, ElementsAre(0.0, 0.0, 4.0));
}

TEST(PonderatedPeaks, SurvivesAnyInputAndClonesGoOnAlike) {
    PonderatedPeaksFeature feature;
    for (const DoubleVector& in : hostileInputs()) {
        const auto pClone = cloneOf(feature);
        DoubleVector values;
        DoubleVector again;
        EXPECT_EQ(feature.compute(in, values), !in.empty());
        EXPECT_EQ(values.size(), in.empty() ? 0U : 3U);
        EXPECT_EQ(pClone->compute(in, again), !in.empty());
        EXPECT_THAT(again, IsIdenticalTo(values));
    }
}

TEST(NonLogPeaks, GivesTheIndicesOfTheFiveHighestPeaks) {
    DoubleVector in(64, 0.0);
    const std::size_t positions[] = {50, 10, 30, 20, 40, 60};
    for (std::size_t p = 0; p < 6; ++p) {
        in[positions[p]] = 6.0 - static_cast<double>(p);
    }
    NonLogPeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, in), ElementsAre(50.0, 10.0, 30.0, 20.0, 40.0));
}

TEST(NonLogPeaks, MissingPeaksAreAtIndexZero) {
    NonLogPeaksFeature feature;
    EXPECT_THAT(valuesOf(feature, singleBin(8, 5)), ElementsAre(5.0, 0.0, 0.0, 0.0, 0.0));
    EXPECT_THAT(valuesOf(feature, {3.0}), ElementsAre(0.0, 0.0, 0.0, 0.0, 0.0));
}

TEST(NonLogPeaks, KeepTheirMannersWithAnyInput) {
    expectFeatureManners(NonLogPeaksFeature());
}
