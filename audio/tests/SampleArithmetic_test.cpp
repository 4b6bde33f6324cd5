#include "features/EnergyArithmetic.h"
#include "features/NeighbourhoodArithmetic.h"
#include "features/SilenceRatioArithmetic.h"

#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

using namespace Zantrix::Audio;
using testing::ElementsAre;
using Samples = std::vector<double>;
using testkit::c_dInfinity;
using testkit::c_dNaN;

TEST(SilenceRatioArithmetic, PeakIsTheLargerOfBothExtremes) {
    EXPECT_EQ(peakAmplitude({}), 0.0);
    EXPECT_EQ(peakAmplitude(Samples{-0.0}), 0.0);
    EXPECT_EQ(peakAmplitude(Samples{0.5, -0.75, 0.25}), 0.75);
    EXPECT_EQ(peakAmplitude(Samples{0.5, -0.25, 0.75}), 0.75);
    EXPECT_EQ(peakAmplitude(Samples{-0.5, -0.25}), 0.5);
    EXPECT_EQ(peakAmplitude(Samples{0.5, -c_dInfinity}), c_dInfinity);
}

TEST(SilenceRatioArithmetic, CountsStrictlyBelow) {
    EXPECT_EQ(countBelow(Samples{0.1, -0.1, 0.05, 0.0, c_dNaN}, 0.1), 2U);
    EXPECT_EQ(countBelow(Samples{0.0}, 0.0), 0U);
    EXPECT_EQ(countBelow(Samples{0.0}, c_dNaN), 0U);
    EXPECT_EQ(countBelow({}, 1.0), 0U);
}

TEST(SilenceRatioArithmetic, EverySampleIsInOneBand) {
    const Samples samples = testkit::noise(1000, 1);
    for (const double peak : {0.5, 5.0, 100.0, 0.0, c_dInfinity, c_dNaN}) {
        const auto bands = amplitudeBands(samples, peak);
        EXPECT_EQ(bands[0] + bands[1] + bands[2] + bands[3], 1000U) << peak;
    }
    EXPECT_THAT(amplitudeBands(samples, c_dNaN), ElementsAre(0, 0, 0, 1000));
    EXPECT_THAT(amplitudeBands(Samples{1.0, -0.5, 0.15, 0.1, -0.05, 0.02, 0.0}, 1.0), ElementsAre(2, 1, 2, 2));
}

TEST(EnergyArithmetic, BinsCoverEveryEnergy) {
    EXPECT_EQ(energyBin(0.0, 1.0, 4), 0U);
    EXPECT_EQ(energyBin(0.5, 1.0, 4), 1U);
    EXPECT_EQ(energyBin(-0.5, 1.0, 4), 1U);
    EXPECT_EQ(energyBin(1.0, 1.0, 4), 3U);
    for (const double sample : {2.0, 1e150, 1e300, c_dInfinity, -c_dInfinity, c_dNaN}) {
        EXPECT_EQ(energyBin(sample, 1.0, 4), 3U) << sample;
        EXPECT_EQ(energyBin(sample, 1.0, 1), 0U) << sample;
    }
}

TEST(EnergyArithmetic, HistogramIsCountedAnew) {
    std::vector<std::uint64_t> bins(2, 77);
    energyHistogram(Samples{0.1, 0.9, 0.9}, 1.0, bins);
    EXPECT_THAT(bins, ElementsAre(1, 2));
    energyHistogram({}, 1.0, bins);
    EXPECT_THAT(bins, ElementsAre(0, 0));
}

TEST(EnergyArithmetic, AddsOnlyEnergiesStrictlyAbove) {
    EnergySum accepted;
    EXPECT_EQ(meanOf(accepted), 0.0);
    addEnergiesAbove(Samples{0.5, -0.5, 1.0, c_dNaN}, 0.25, accepted);
    EXPECT_EQ(accepted.uiCount, 1U);
    addEnergiesAbove(Samples{2.0}, 0.25, accepted);
    EXPECT_EQ(meanOf(accepted), 2.5);
}

TEST(EnergyArithmetic, SegmentsFollowTheSumOfSteps) {
    // A third of a step adds up to 1/3, then 2/3: every second sample closes.
    SegmentMaxima maxima;
    addSegments(Samples{0.5, 0.75}, 1.0 / 3.0, 0.0, maxima);
    EXPECT_EQ(maxima.uiCount, 1U);
    EXPECT_EQ(maxima.dMinimum, 0.5);
    EXPECT_EQ(maxima.dPhase, 0.0);
    EXPECT_EQ(maxima.dCurrentMaximum, 0.75);
    addSegments(Samples{0.25}, 1.0 / 3.0, 0.0, maxima);
    EXPECT_EQ(maxima.dPhase, 1.0 / 3.0);
    EXPECT_EQ(maxima.dCurrentMaximum, 0.75);
}

TEST(EnergyArithmetic, RoundingOfTheSteppedPhaseDecidesWhereASegmentCloses) {
    // Counting samples would close after n / 2 of them; steps add up to a little more than one half for some n.
    std::size_t early = 0;
    for (std::size_t n = 2; n <= 200; n += 2) {
        SegmentMaxima maxima;
        std::size_t samples = 0;
        while (maxima.uiCount == 0) {
            addSegments(Samples{1.0}, 1.0 / static_cast<double>(n), 0.0, maxima);
            ++samples;
        }
        EXPECT_GE(samples, n / 2) << n;
        EXPECT_LE(samples, n / 2 + 1) << n;
        early += samples == n / 2 ? 1 : 0;
    }
    EXPECT_GT(early, 0U);
}

TEST(EnergyArithmetic, ClosingJudgesTheMaximumByItsHeight) {
    SegmentMaxima maxima;
    maxima.dCurrentMaximum = 2.0;
    closeSegment(1.0, maxima);
    EXPECT_EQ(meanOf(maxima), 2.0);
    maxima.dCurrentMaximum = 3.0;  // exactly twice as high: accepted
    closeSegment(1.0, maxima);
    EXPECT_EQ(meanOf(maxima), 2.5);
    maxima.dCurrentMaximum = 1.75;  // exactly half as high: accepted
    closeSegment(1.0, maxima);
    EXPECT_EQ(maxima.uiCount, 3U);
    EXPECT_EQ(maxima.dMinimum, 1.75);
    maxima.dCurrentMaximum = 1.0;  // lower: ignored
    closeSegment(1.0, maxima);
    EXPECT_EQ(maxima.uiCount, 3U);
    maxima.dCurrentMaximum = 9.0;  // higher: anew
    closeSegment(1.0, maxima);
    EXPECT_EQ(maxima.uiCount, 1U);
    EXPECT_EQ(meanOf(maxima), 9.0);
    EXPECT_EQ(maxima.dMinimum, 9.0);
}

TEST(NeighbourhoodArithmetic, StaysWithinTheVector) {
    EXPECT_EQ(startOfNeighbourhood(Samples{5, 1, 2, 0}), 0U);
    EXPECT_EQ(startOfNeighbourhood(Samples{1, 5, 2, 0}), 0U);
    EXPECT_EQ(startOfNeighbourhood(Samples{0, 1, 5, 2}), 1U);
    EXPECT_EQ(startOfNeighbourhood(Samples{0, 1, 2, 5}), 1U);
    EXPECT_EQ(startOfNeighbourhood(Samples{0, 1, 5}), 0U);
    EXPECT_EQ(startOfNeighbourhood(Samples(9, 1.0)), 0U);
    EXPECT_EQ(startOfNeighbourhood(Samples(9, c_dNaN)), 0U);
}
