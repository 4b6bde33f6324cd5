#include "features/HarmonicProductArithmetic.h"
#include "features/LowFreqEnergyRatioArithmetic.h"
#include "features/PeakArithmetic.h"
#include "features/SpectralRangeArithmetic.h"
#include "features/SpectralShapeArithmetic.h"
#include "features/SpectrumBins.h"

#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

using namespace Zantrix::Audio;
using testing::Each;
using testing::ElementsAre;
using testkit::c_dInfinity;
using testkit::c_dNaN;

namespace {

// The same bin of two spectra side by side.
typedef double Lanes __attribute__((vector_size(2 * sizeof(double))));

std::vector<double> spectrum(std::size_t count, std::uint64_t seed) {
    std::vector<double> values = testkit::noise(count, seed);
    for (double& value : values) {
        value = value * value;
    }
    return values;
}

std::vector<Lanes> sideBySide(const std::vector<double>& a, const std::vector<double>& b) {
    std::vector<Lanes> lanes;
    for (std::size_t i = 0; i < a.size(); ++i) {
        lanes.push_back(Lanes{a[i], b[i]});
    }
    return lanes;
}

std::vector<double> laneOf(const std::vector<Lanes>& values, std::size_t lane) {
    std::vector<double> result;
    for (const Lanes& value : values) {
        result.push_back(value[lane]);
    }
    return result;
}

// Spectra that take every path: noise, zeros among the bins, silence, a single bin, a flat one.
std::vector<std::vector<double>> spectra() {
    std::vector<double> gaps = spectrum(128, 3);
    for (std::size_t k = 0; k < gaps.size(); k += 3) {
        gaps[k] = 0.0;
    }
    std::vector<double> single(128, 0.0);
    single[17] = 1.0;
    return {spectrum(128, 1),
            spectrum(128, 2),
            gaps,
            std::vector<double>(128, 0.0),
            single,
            std::vector<double>(128, 1.0 / 128)};
}

// Calls `check` with every pair of spectra, as lanes and one by one.
template <typename Check>
void forEveryPair(Check check) {
    for (const std::vector<double>& a : spectra()) {
        for (const std::vector<double>& b : spectra()) {
            check(sideBySide(a, b), a, b);
        }
    }
}

}  // namespace

TEST(SpectrumBins, TruncationNeverWraps) {
    EXPECT_EQ(truncateToIndex(0.0), 0U);
    EXPECT_EQ(truncateToIndex(-1e300), 0U);
    EXPECT_EQ(truncateToIndex(c_dNaN), 0U);
    EXPECT_EQ(truncateToIndex(0.999), 0U);
    EXPECT_EQ(truncateToIndex(1.0), 1U);
    EXPECT_EQ(truncateToIndex(9007199254740993.5), 9007199254740994U);
    EXPECT_EQ(truncateToIndex(18446744073709549568.0), 18446744073709549568U);
    EXPECT_EQ(truncateToIndex(18446744073709551616.0), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(truncateToIndex(c_dInfinity), std::numeric_limits<std::uint64_t>::max());
}

TEST(SpectrumBins, CountsTheBinsBelowAFrequency) {
    EXPECT_EQ(binsBelow(100.0, 0), 0U);
    EXPECT_EQ(binsBelow(100.0, 16), 0U);
    EXPECT_EQ(binsBelow(100.0, 39), 0U);
    EXPECT_EQ(binsBelow(100.0, 40), 1U);
    EXPECT_EQ(binsBelow(100.0, 128), 3U);
    EXPECT_EQ(binsBelow(1000.0, 128), 32U);
}

TEST(SpectrumBins, WidthOfABinIsRoundedBeforeItDivides) {
    // There are lengths at which 100 * L / 4000 counts another bin; these divisions are what counts.
    std::size_t differing = 0;
    for (std::size_t count = 1; count <= 100000; ++count) {
        const double bins = static_cast<double>(count);
        ASSERT_EQ(binsBelow(100.0, count), static_cast<std::size_t>(100.0 / (4000.0 / bins)));
        differing += binsBelow(100.0, count) != count / 40 ? 1 : 0;
    }
    EXPECT_GT(differing, 0U);
}

TEST(SpectralShapeArithmetic, LanesGiveTheFlatnessOfEachSpectrum) {
    forEveryPair([](const std::vector<Lanes>& lanes, const std::vector<double>& a, const std::vector<double>& b) {
        Lanes both;
        double flatnessOfA = 0.0;
        double flatnessOfB = 0.0;
        flatness<Lanes>(lanes, both);
        flatness<double>(a, flatnessOfA);
        flatness<double>(b, flatnessOfB);
        EXPECT_EQ(both[0], flatnessOfA);
        EXPECT_EQ(both[1], flatnessOfB);
    });
}

TEST(SpectralShapeArithmetic, FlatnessOfAnEmptySpectrumIsOne) {
    double value = 0.0;
    flatness<double>({}, value);
    EXPECT_EQ(value, 1.0);
}

TEST(SpectralShapeArithmetic, BandTakesInHalfABinAtEitherEdge) {
    const BinRange band = bandOfBins(8000, 500, 1500, 128);
    EXPECT_EQ(band.first, 15U);
    EXPECT_EQ(band.last, 48U);
    const BinRange none = bandOfBins(0, 0, 0, 128);
    EXPECT_EQ(none.first, 0U);
    EXPECT_EQ(none.last, 0U);
    const BinRange endless = bandOfBins(0, 1, 1, 128);
    EXPECT_EQ(endless.first, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(endless.last, std::numeric_limits<std::uint64_t>::max());
}

TEST(SpectralShapeArithmetic, LanesGiveTheWeightedAreaOfEachSpectrum) {
    forEveryPair([](const std::vector<Lanes>& lanes, const std::vector<double>& a, const std::vector<double>& b) {
        Lanes both;
        double areaOfA = 0.0;
        double areaOfB = 0.0;
        weightedArea<Lanes>(lanes, {15, 48}, 8000, both);
        weightedArea<double>(a, {15, 48}, 8000, areaOfA);
        weightedArea<double>(b, {15, 48}, 8000, areaOfB);
        EXPECT_EQ(both[0], areaOfA);
        EXPECT_EQ(both[1], areaOfB);
    });
}

TEST(HarmonicProductArithmetic, CandidatesAreThoseWithAFifthHarmonic) {
    const std::size_t expected[] = {0, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 3};
    for (std::size_t count = 0; count < std::size(expected); ++count) {
        EXPECT_EQ(candidateCount(count), expected[count]) << count;
    }
    EXPECT_EQ(candidateCount(128), 26U);
}

TEST(HarmonicProductArithmetic, EveryBinReadIsWithinTheSpectrum) {
    for (std::size_t count = 1; count <= 300; ++count) {
        for (std::size_t i = 1; i < candidateCount(count); ++i) {
            for (std::size_t h = 1; h <= 5; ++h) {
                EXPECT_LT(HarmonicBin()(i, h, count), count);
                EXPECT_LT(ShiftedHarmonicBin()(i, h, count), count);
            }
        }
    }
}

TEST(HarmonicProductArithmetic, LanesGiveTheProductsOfEachSpectrum) {
    forEveryPair([](const std::vector<Lanes>& lanes, const std::vector<double>& a, const std::vector<double>& b) {
        const auto expectEqual = [&](auto product, std::size_t size) {
            std::vector<Lanes> both(size);
            std::vector<double> ofA(size);
            std::vector<double> ofB(size);
            product(std::span<const Lanes>(lanes), std::span<Lanes>(both));
            product(std::span<const double>(a), std::span<double>(ofA));
            product(std::span<const double>(b), std::span<double>(ofB));
            EXPECT_EQ(laneOf(both, 0), ofA);
            EXPECT_EQ(laneOf(both, 1), ofB);
        };
        expectEqual([](auto in, auto out) { productOfHarmonics(in, out, HarmonicBin()); }, 26);
        expectEqual([](auto in, auto out) { productOfHarmonics(in, out, ShiftedHarmonicBin()); }, 26);
        expectEqual([](auto in, auto out) { oldHarmonicProduct(in, out); }, 128);
        expectEqual([](auto in, auto out) { antiHarmonicProduct(in, out); }, 26);
    });
}

TEST(HarmonicProductArithmetic, NothingOfWhatTheProductHeldRemains) {
    const std::vector<double> in = spectrum(128, 4);
    std::vector<double> fresh(26, 0.0);
    std::vector<double> used(26, c_dNaN);
    productOfHarmonics<double>(in, fresh, HarmonicBin());
    productOfHarmonics<double>(in, used, HarmonicBin());
    EXPECT_EQ(used, fresh);
    antiHarmonicProduct<double>(in, fresh);
    used.assign(26, c_dNaN);
    antiHarmonicProduct<double>(in, used);
    EXPECT_EQ(used, fresh);
    EXPECT_THAT(std::vector<double>(used.begin(), used.begin() + 2), ElementsAre(1.0, 1.0));
    fresh.assign(128, 0.0);
    used.assign(128, c_dNaN);
    oldHarmonicProduct<double>(in, fresh);
    oldHarmonicProduct<double>(in, used);
    EXPECT_EQ(used, fresh);
}

TEST(LowFreqEnergyRatioArithmetic, LanesGiveTheSumOfEachSpectrum) {
    forEveryPair([](const std::vector<Lanes>& lanes, const std::vector<double>& a, const std::vector<double>& b) {
        Lanes both;
        double sumOfA = 0.0;
        double sumOfB = 0.0;
        sumOfBins<Lanes>(lanes, 3, 32, both);
        sumOfBins<double>(a, 3, 32, sumOfA);
        sumOfBins<double>(b, 3, 32, sumOfB);
        EXPECT_EQ(both[0], sumOfA);
        EXPECT_EQ(both[1], sumOfB);
    });
}

TEST(LowFreqEnergyRatioArithmetic, SumEndsWithTheSpectrum) {
    const std::vector<double> ones(5, 1.0);
    double sum = 9.0;
    sumOfBins<double>(ones, 2, 1000, sum);
    EXPECT_EQ(sum, 3.0);
    sumOfBins<double>(ones, 7, 1000, sum);
    EXPECT_EQ(sum, 0.0);
}

TEST(PeakArithmetic, ErasesTheLobeAndNothingElse) {
    std::vector<double> values = {1, 2, 3, 0, 5, 9, 4, 1, 2, 3};
    values[5] = 0.0;
    eraseLobe(values, 5, 9.0);
    // To the left 5 and 0 fall, 3 does not, nor does 2 below the 0. To the right 4 and 1 fall, 2 and 3 do not.
    EXPECT_THAT(values, ElementsAre(1, 2, 3, 0, 0, 0, 0, 0, 2, 3));
}

TEST(PeakArithmetic, RisingTwiceEndsTheLobe) {
    std::vector<double> values = {4, 3, 2, 0, 9, 1, 2, 3, 4};
    values[4] = 0.0;
    eraseLobe(values, 4, 9.0);
    EXPECT_THAT(values, ElementsAre(4, 3, 2, 0, 0, 0, 2, 3, 4));
}

TEST(PeakArithmetic, EveryVectorOfThreeHeightsIsSearchedWithinItsBounds) {
    // All vectors of up to 7 values out of 0, 1, 2: each peak is the largest value left, and no value is found twice.
    for (std::size_t size = 1; size <= 7; ++size) {
        std::size_t combinations = 1;
        for (std::size_t i = 0; i < size; ++i) {
            combinations *= 3;
        }
        for (std::size_t c = 0; c < combinations; ++c) {
            std::vector<double> in(size);
            for (std::size_t i = 0, rest = c; i < size; ++i, rest /= 3) {
                in[i] = static_cast<double>(rest % 3);
            }
            std::vector<double> work = in;
            std::vector<double> heights(4);
            std::vector<std::size_t> positions(4);
            findPeaks(work, heights, positions);
            EXPECT_EQ(heights[0], *std::max_element(in.begin(), in.end()));
            EXPECT_TRUE(std::is_sorted(heights.rbegin(), heights.rend()));
            for (std::size_t p = 0; p < heights.size(); ++p) {
                ASSERT_LT(positions[p], size);
                if (heights[p] > 0.0) {
                    EXPECT_EQ(heights[p], in[positions[p]]);
                    EXPECT_EQ(
                        std::count(positions.begin(), positions.begin() + static_cast<std::ptrdiff_t>(p), positions[p]),
                        0);
                } else {
                    EXPECT_EQ(positions[p], 0U);
                }
            }
        }
    }
}

TEST(PeakArithmetic, PositionZeroHasTheLogarithmOfOneMillionth) {
    EXPECT_EQ(logOfPosition(0), std::log(1e-6));
    EXPECT_EQ(logOfPosition(1), 0.0);
    EXPECT_EQ(logOfPosition(64), std::log(64.0));
}

TEST(SpectralRangeArithmetic, TurnsFrequenciesIntoBins) {
    const BinsAround bins = binsAround(440, 20, 256);
    EXPECT_EQ(bins.centreIndex, 28U);
    EXPECT_EQ(bins.width, 2U);
    EXPECT_DOUBLE_EQ(bins.relativePosition, 0.16);
}

TEST(SpectralRangeArithmetic, RelativePositionIsWithinHalfABin) {
    for (std::uint64_t frequency = 1; frequency <= 4000; ++frequency) {
        const BinsAround bins = binsAround(frequency, 20, 128);
        EXPECT_GE(bins.relativePosition, -0.5) << frequency;
        EXPECT_LE(bins.relativePosition, 0.5) << frequency;
        EXPECT_NEAR((static_cast<double>(bins.centreIndex) + bins.relativePosition) * 31.25,
                    static_cast<double>(frequency), 1e-9);
    }
}

TEST(SpectralRangeArithmetic, IndicesSaturateAndAnEmptySpectrumHasNone) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(binsAround(largest, largest, 8192).centreIndex, largest);
    EXPECT_EQ(binsAround(largest, largest, 8192).width, largest);
    EXPECT_EQ(binsAround(440, 20, 0).centreIndex, 0U);
    EXPECT_EQ(binsAround(440, 20, 0).width, 0U);
}
