#include "SpectrumTesting.h"

#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace spectrumtesting;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::sameBits;
using Zantrix::Cloneable;

namespace {

DoubleVector reducedOf(const DoubleVector& in, unsigned long long bands) {
    SpectrumReducedFeature feature(bands);
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

// Sums bins first .. last in order.
double sumOfBins(const DoubleVector& spectrum, std::size_t first, std::size_t last) {
    double sum = 0.0;
    for (std::size_t k = first; k <= last; ++k) {
        sum += spectrum[k];
    }
    return sum;
}

TEST(ReducedSpectrum, EightBandsOfSixteenBinsAndTheLastTakesBinSevenToo) {
    const DoubleVector in = noise(256, 21);
    const DoubleVector spectrum = spectrumOf(in);
    const DoubleVector bands = reducedOf(in, 8);
    ASSERT_EQ(bands.size(), 8u);
    for (std::size_t b = 0; b < 7; ++b) {
        EXPECT_EQ(bands[b], sumOfBins(spectrum, 16 * b, 16 * b + 15)) << b;
    }
    EXPECT_EQ(bands[7], sumOfBins(spectrum, 112, 127) + spectrum[7]);
}

TEST(ReducedSpectrum, FortyBandsOfThreeBinsLoseSixAndTheLastTakesTheRest) {
    const DoubleVector in = noise(256, 22);
    const DoubleVector spectrum = spectrumOf(in);
    const DoubleVector bands = reducedOf(in, 40);
    ASSERT_EQ(bands.size(), 40u);
    for (std::size_t b = 0; b < 39; ++b) {
        EXPECT_EQ(bands[b], sumOfBins(spectrum, 3 * b, 3 * b + 2)) << b;
    }
    EXPECT_EQ(bands[39], sumOfBins(spectrum, 117, 119) + sumOfBins(spectrum, 126, 127));
    EXPECT_NEAR(sumOf(bands), 1.0 - sumOfBins(spectrum, 120, 125), 1e-12);
}

TEST(ReducedSpectrum, TwentyBandsOfSixBinsLoseSixAndTheLastTakesTheRest) {
    const DoubleVector in = noise(256, 23);
    const DoubleVector spectrum = spectrumOf(in);
    const DoubleVector bands = reducedOf(in, 20);
    ASSERT_EQ(bands.size(), 20u);
    for (std::size_t b = 0; b < 19; ++b) {
        EXPECT_EQ(bands[b], sumOfBins(spectrum, 6 * b, 6 * b + 5)) << b;
    }
    // Bins 120 .. 125 make a band beyond the last, which is cut off.
    EXPECT_EQ(bands[19], sumOfBins(spectrum, 114, 119) + sumOfBins(spectrum, 126, 127));
}

TEST(ReducedSpectrum, AsManyBandsAsBinsDoublesTheLast) {
    const DoubleVector in = noise(32, 24);
    DoubleVector expected = spectrumOf(in);
    expected.back() *= 2.0;
    EXPECT_TRUE(sameBits(reducedOf(in, 16), expected));
}

TEST(ReducedSpectrum, OneBandIsTheWholeAndBinZeroOnceMore) {
    const DoubleVector in = noise(32, 25);
    const DoubleVector spectrum = spectrumOf(in);
    EXPECT_THAT(reducedOf(in, 1), ElementsAre(sumOfBins(spectrum, 0, 15) + spectrum[0]));
}

TEST(ReducedSpectrum, AnyNumberOfBandsFollowsTheSameWalk) {
    for (const std::size_t n : {8, 32, 64, 256}) {
        const DoubleVector in = noise(n, 26);
        const DoubleVector spectrum = spectrumOf(in);
        const std::size_t binCount = spectrum.size();
        for (std::size_t bandCount = 1; bandCount <= binCount; ++bandCount) {
            const std::size_t groupSize = binCount / bandCount;
            const std::size_t stored = (binCount - 1) / groupSize;  // groups before the last one
            std::vector<double> expected;
            for (std::size_t b = 0; b < bandCount; ++b) {
                expected.push_back(b < stored ? sumOfBins(spectrum, b * groupSize, (b + 1) * groupSize - 1)
                                              : spectrum[b]);
            }
            expected.back() += sumOfBins(spectrum, stored * groupSize, binCount - 1);
            EXPECT_TRUE(sameBits(reducedOf(in, bandCount), expected)) << n << ' ' << bandCount;
        }
    }
}

TEST(ReducedSpectrum, StaysWholeWithFewerBinsThanBands) {
    const LogRecorder log;
    const DoubleVector in = noise(64, 27);
    const DoubleVector spectrum = spectrumOf(in);
    for (const unsigned long long bands : {33ull, 40ull, 128ull, 1ull << 63, ~0ull}) {
        EXPECT_TRUE(sameBits(reducedOf(in, bands), spectrum)) << bands;
    }
    EXPECT_THAT(reducedOf({0.5}, 8), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(ReducedSpectrum, OfNoBandsStaysWhole) {
    const DoubleVector in = noise(64, 28);
    EXPECT_TRUE(sameBits(reducedOf(in, 0), spectrumOf(in)));
}

TEST(ReducedSpectrum, OfSilenceIsAllZero) {
    const DoubleVector bands = reducedOf(DoubleVector(256, 0.0), 40);
    EXPECT_EQ(bands.size(), 40u);
    EXPECT_THAT(bands, Each(0.0));
}

TEST(ReducedSpectrum, GoesBehindWhatTheOutputHolds) {
    const DoubleVector in = noise(256, 29);
    SpectrumReducedFeature feature(20);
    DoubleVector out{1.0, 2.0, 3.0};
    EXPECT_TRUE(feature.compute(in, out));
    ASSERT_EQ(out.size(), 23u);
    EXPECT_THAT(std::vector<double>(out.begin(), out.begin() + 3), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_TRUE(sameBits(DoubleVector(out.begin() + 3, out.end()), reducedOf(in, 20)));
}

TEST(ReducedSpectrum, WorksWhenInputAndOutputAreOne) {
    const DoubleVector in = noise(64, 30);
    SpectrumReducedFeature feature(8);
    DoubleVector both(in);
    EXPECT_TRUE(feature.compute(both, both));
    ASSERT_EQ(both.size(), 72u);
    EXPECT_TRUE(sameBits(DoubleVector(both.begin() + 64, both.end()), reducedOf(in, 8)));
}

TEST(ReducedSpectrum, AnInputOfAnotherLengthFailsAndLeavesItsSamples) {
    SpectrumReducedFeature feature(8);
    DoubleVector out;
    EXPECT_TRUE(feature.compute(noise(256, 31), out));
    const DoubleVector in = noise(128, 32);
    const LogRecorder log;
    EXPECT_FALSE(feature.compute(in, out));
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion(c_szOtherSize, "AudioFeatureImpl")));
    ASSERT_EQ(out.size(), 8u + 128u);
    EXPECT_TRUE(sameBits(DoubleVector(out.begin() + 8, out.end()), in));
}

TEST(ReducedSpectrum, CopiesHaveTheBandsAndTheWindow) {
    SpectrumReducedFeature feature(20);
    DoubleVector out;
    EXPECT_TRUE(feature.compute(noise(256, 33), out));
    const std::unique_ptr<Cloneable> pClone(feature.clone());
    auto* pFeature = dynamic_cast<SpectrumReducedFeature*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    SpectrumReducedFeature assigned(8);
    assigned = feature;
    const DoubleVector in = noise(256, 34);
    for (SpectrumReducedFeature* pCopy : {pFeature, &assigned}) {
        out.clear();
        EXPECT_TRUE(pCopy->compute(in, out));
        EXPECT_TRUE(sameBits(out, reducedOf(in, 20)));
        const LogRecorder log;
        EXPECT_FALSE(pCopy->compute(noise(64, 35), out));
    }
}

}  // namespace
