#include <murvane/audio/features/SpectrumFeatures.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <numeric>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/WavFixture.h>
#include <vector>

using namespace Zantrix;
using namespace Zantrix::Audio;
using Math::DoubleVector;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::sameBits;

namespace {

constexpr double c_dNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double c_dInfinity = std::numeric_limits<double>::infinity();
constexpr const char* c_szOtherSize = "m_pSignalWindow->getSize() == uiSizeFFT";

DoubleVector noise(std::size_t count, std::uint64_t seed) {
    const std::vector<double> samples = testkit::noise(count, seed);
    return DoubleVector(samples.begin(), samples.end());
}

DoubleVector sine(std::size_t count, double frequencyHz) {
    const std::vector<double> samples = testkit::sine(count, frequencyHz);
    return DoubleVector(samples.begin(), samples.end());
}

DoubleVector spectrumOf(const DoubleVector& in) {
    SpectrumFeature feature;
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

DoubleVector reducedOf(const DoubleVector& in, unsigned long long bands) {
    SpectrumReducedFeature feature(bands);
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

double sumOf(const DoubleVector& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

// The normalised powers by the definition of the transform, in the widest arithmetic.
std::vector<double> spectrumByDefinition(const DoubleVector& in) {
    const std::size_t n = in.size();
    const long double turn = 2.0L * std::numbers::pi_v<long double>;
    std::vector<long double> powers;
    long double total = 0.0L;
    for (std::size_t k = 0; k < n / 2; ++k) {
        long double re = 0.0L;
        long double im = 0.0L;
        for (std::size_t i = 0; i < n; ++i) {
            const long double weight =
                0.5L * (1.0L - std::cos(turn * static_cast<long double>(i) / static_cast<long double>(n - 1)));
            const long double angle = turn * static_cast<long double>(i * k % n) / static_cast<long double>(n);
            re += weight * in[i] * std::cos(angle);
            im -= weight * in[i] * std::sin(angle);
        }
        powers.push_back(re * re + im * im);
        total += powers.back();
    }
    std::vector<double> spectrum;
    for (const long double power : powers) {
        spectrum.push_back(static_cast<double>(power / total));
    }
    return spectrum;
}

void expectNear(const DoubleVector& values, const std::vector<double>& expected, double tolerance) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
        EXPECT_NEAR(values[k], expected[k], tolerance) << "bin " << k << " of " << values.size();
    }
}

TEST(Spectrum, HasHalfAsManyValuesAsSamplesAndTheySumToOne) {
    for (const std::size_t n : {2, 4, 8, 64, 128, 256, 512, 1024, 4096}) {
        const DoubleVector spectrum = spectrumOf(noise(n, n));
        EXPECT_EQ(spectrum.size(), n / 2);
        if (n > 2) {  // both weights of two samples are zero
            EXPECT_NEAR(sumOf(spectrum), 1.0, 1e-12) << n;
        }
    }
}

TEST(Spectrum, IsTheDefinitionOfTheTransformOfTheWeightedSamples) {
    for (const std::size_t n : {4, 8, 16, 64, 256, 1024}) {
        const DoubleVector in = noise(n, n + 1);
        expectNear(spectrumOf(in), spectrumByDefinition(in), 1e-14);
    }
}

TEST(Spectrum, AConstantLeaksIntoTheFirstTwoBinsOnly) {
    const DoubleVector spectrum = spectrumOf(DoubleVector(256, 0.25));
    EXPECT_NEAR(spectrum[0], 0.798122, 5e-7);
    EXPECT_NEAR(spectrum[1], 0.201876, 5e-7);
    EXPECT_LT(sumOf(spectrum) - spectrum[0] - spectrum[1], 5e-6);
}

TEST(Spectrum, ASineHasItsPeakAtItsBin) {
    // Bin 32 of 128, in the middle of a Hann peak of three bins: 2/3 and twice 1/6.
    const DoubleVector spectrum = spectrumOf(sine(256, 1000.0));
    EXPECT_NEAR(spectrum[32], 2.0 / 3.0, 0.01);
    EXPECT_NEAR(spectrum[31], 1.0 / 6.0, 0.01);
    EXPECT_NEAR(spectrum[33], 1.0 / 6.0, 0.01);
    EXPECT_GT(spectrum[31] + spectrum[32] + spectrum[33], 0.9999);
}

TEST(Spectrum, TheTermAtHalfTheRateIsNotPartOfIt) {
    DoubleVector in(256);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = i % 2 == 0 ? 1.0 : -1.0;
    }
    // Only what leaks into its neighbour is left, and that is then nearly everything.
    EXPECT_GT(spectrumOf(in)[127], 0.999);
}

TEST(Spectrum, TheWindowIsWeightedOnce) {
    // With zero weights at both ends, samples there do not count at all.
    DoubleVector in = noise(64, 5);
    const DoubleVector spectrum = spectrumOf(in);
    in.front() = 1000.0;
    EXPECT_TRUE(sameBits(spectrumOf(in), spectrum));
    in[1] += 1.0;
    EXPECT_FALSE(sameBits(spectrumOf(in), spectrum));
}

TEST(Spectrum, OfSilenceIsAllZero) {
    DoubleVector out{9.0};
    SpectrumFeature feature;
    EXPECT_TRUE(feature.compute(DoubleVector(256, 0.0), out));
    EXPECT_EQ(out.size(), 129u);
    out.erase(out.begin());
    EXPECT_THAT(out, Each(0.0));
}

TEST(Spectrum, OfSamplesWhosePowersUnderflowIsAllZero) {
    EXPECT_THAT(spectrumOf(DoubleVector(256, 1e-200)), Each(0.0));
}

TEST(Spectrum, DoesNotDependOnTheLevel) {
    const DoubleVector in = noise(256, 6);
    const DoubleVector spectrum = spectrumOf(in);
    for (const double factor : {0x1.0p-40, 0.5, 4.0, 0x1.0p+100, -1.0}) {
        DoubleVector scaled(in);
        scaled *= factor;
        EXPECT_TRUE(sameBits(spectrumOf(scaled), spectrum)) << factor;
    }
}

TEST(Spectrum, OfWhatIsNotANumberIsNotANumber) {
    for (const double value : {c_dNaN, c_dInfinity, -c_dInfinity}) {
        DoubleVector in = noise(64, 7);
        in[20] = value;
        const DoubleVector spectrum = spectrumOf(in);
        EXPECT_EQ(spectrum.size(), 32u);
        for (const double share : spectrum) {
            EXPECT_TRUE(std::isnan(share)) << value;
        }
    }
}

TEST(Spectrum, GoesBehindWhatTheOutputHolds) {
    SpectrumFeature feature;
    DoubleVector out{1.0, 2.0, 3.0};
    const DoubleVector in = noise(256, 8);
    EXPECT_TRUE(feature.compute(in, out));
    ASSERT_EQ(out.size(), 3u + 128u);
    EXPECT_THAT(std::vector<double>(out.begin(), out.begin() + 3), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_TRUE(sameBits(DoubleVector(out.begin() + 3, out.end()), spectrumOf(in)));
    EXPECT_TRUE(feature.compute(in, out));
    EXPECT_EQ(out.size(), 3u + 2u * 128u);
}

TEST(Spectrum, IsTheSameEachTime) {
    SpectrumFeature feature;
    const DoubleVector in = noise(256, 9);
    const DoubleVector other = noise(256, 10);
    const DoubleVector spectrum = spectrumOf(in);
    for (int round = 0; round < 3; ++round) {
        DoubleVector out;
        EXPECT_TRUE(feature.compute(other, out));
        out.clear();
        EXPECT_TRUE(feature.compute(in, out));
        EXPECT_TRUE(sameBits(out, spectrum));
    }
}

TEST(Spectrum, AnInputOfAnotherLengthFailsAndLeavesItsSamples) {
    SpectrumFeature feature;
    DoubleVector out;
    EXPECT_TRUE(feature.compute(noise(256, 11), out));
    for (const std::size_t n : {128, 512, 255, 257, 0}) {
        const DoubleVector in = noise(n, 12);
        out = {1.0, 2.0};
        const LogRecorder log;
        EXPECT_FALSE(feature.compute(in, out)) << n;
        EXPECT_THAT(log.records(), ElementsAre(failedAssertion(c_szOtherSize, "AudioFeatureImpl")));
        ASSERT_EQ(out.size(), 2 + n);
        EXPECT_EQ(out[0], 1.0);
        EXPECT_EQ(out[1], 2.0);
        EXPECT_TRUE(sameBits(DoubleVector(out.begin() + 2, out.end()), in)) << n;
    }
    out.clear();
    const DoubleVector in = noise(256, 13);
    EXPECT_TRUE(feature.compute(in, out));
    EXPECT_TRUE(sameBits(out, spectrumOf(in)));
}

TEST(Spectrum, ALengthThatIsNoPowerOfTwoIsReportedAndComputedAllTheSame) {
    for (const std::size_t n : {3, 5, 6, 7, 10, 100, 240, 255}) {
        const DoubleVector in = noise(n, n);
        SpectrumFeature feature;
        DoubleVector out{9.0};
        const LogRecorder log;
        EXPECT_TRUE(feature.compute(in, out)) << n;
        EXPECT_THAT(log.records(), ElementsAre(failedAssertion("isPowerOfTwo(n)", "MathFourierTransform"))) << n;
        EXPECT_EQ(out.front(), 9.0);
        out.erase(out.begin());
        expectNear(out, spectrumByDefinition(in), 1e-12);
    }
}

TEST(Spectrum, OfOneSampleHasNoValues) {
    const LogRecorder log;
    EXPECT_THAT(spectrumOf({0.5}), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(Spectrum, OfNothingHasNoValuesAndTakesNothingElseAfterwards) {
    const LogRecorder log;
    SpectrumFeature feature;
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(9.0));
    EXPECT_FALSE(feature.compute({1.0, 2.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 1.0, 2.0));
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion("isPowerOfTwo(n)", "MathFourierTransform"),
                                           failedAssertion(c_szOtherSize, "AudioFeatureImpl")));
}

TEST(Spectrum, WorksWhenInputAndOutputAreOne) {
    SpectrumFeature feature;
    const DoubleVector in = noise(64, 14);
    DoubleVector both(in);
    both.shrink_to_fit();
    EXPECT_TRUE(feature.compute(both, both));
    ASSERT_EQ(both.size(), 96u);
    EXPECT_TRUE(sameBits(DoubleVector(both.begin(), both.begin() + 64), in));
    EXPECT_TRUE(sameBits(DoubleVector(both.begin() + 64, both.end()), spectrumOf(in)));
}

TEST(Spectrum, CopiesTakeTheWindowAlong) {
    SpectrumFeature used;
    DoubleVector out;
    EXPECT_TRUE(used.compute(noise(256, 15), out));
    const std::unique_ptr<Cloneable> pClone(used.clone());
    auto* pFeature = dynamic_cast<SpectrumFeature*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    SpectrumFeature copy(used);
    SpectrumFeature assigned;
    EXPECT_TRUE(assigned.compute(noise(64, 16), out));
    assigned = used;
    const DoubleVector in = noise(256, 17);
    for (SpectrumFeature* pCopy : {pFeature, &copy, &assigned}) {
        const LogRecorder log;
        out.clear();
        EXPECT_FALSE(pCopy->compute(noise(64, 16), out));
        EXPECT_EQ(log.records().size(), 1u);
        out.clear();
        EXPECT_TRUE(pCopy->compute(in, out));
        EXPECT_TRUE(sameBits(out, spectrumOf(in)));
    }
}

TEST(Spectrum, CopiesOfAnUnusedFeatureTakeAnyLength) {
    const SpectrumFeature unused;
    const std::unique_ptr<Cloneable> pClone(unused.clone());
    auto* pFeature = dynamic_cast<SpectrumFeature*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    SpectrumFeature assigned;
    DoubleVector out;
    EXPECT_TRUE(assigned.compute(noise(256, 18), out));
    assigned = unused;
    EXPECT_TRUE(pFeature->compute(noise(64, 19), out));
    EXPECT_TRUE(assigned.compute(noise(128, 20), out));
    EXPECT_EQ(out.size(), 128u + 32u + 64u);
}

TEST(Spectrum, TellsItsNames) {
    EXPECT_STREQ(SpectrumFeature::getName(), "SPECTRUM");
    EXPECT_STREQ(SpectrumFeature::sGetXprName(), "spectrum");
    const SpectrumFeature feature;
    const Math::Xpr::FunctionAdaptor& function = feature;
    EXPECT_STREQ(function.getFunctionName(), "spectrum");
    EXPECT_EQ(function.getArgumentNames().size(), 1u);
    EXPECT_TRUE(function.getParameters().empty());
    EXPECT_STREQ(SpectrumFeature::getMemAccountName(), "FunctionAdaptor");
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

// Windows of one length, some of them out of the ordinary.
std::vector<DoubleVector> manyWindows(std::size_t count, std::size_t n) {
    std::vector<DoubleVector> windows;
    for (std::size_t i = 0; i < count; ++i) {
        DoubleVector window = noise(n, 100 + i);
        switch (i % 7) {
            case 2:
                window.assign(n, 0.0);
                break;
            case 3:
                window[n / 3] = c_dNaN;
                break;
            case 4:
                window *= 1e-157;  // the reciprocal of its total overflows
                break;
            case 5:
                window *= 1e200;
                break;
            default:
                break;
        }
        windows.push_back(window);
    }
    return windows;
}

template <class Feature>
void expectWindowsEqualOneByOne(const Feature& prototype) {
    for (const std::size_t n : {2, 4, 8, 16, 64, 256, 6, 7, 1}) {
        for (const std::size_t count : {0, 1, 2, 3, 7, 8, 9, 16, 23}) {
            const std::vector<DoubleVector> windows = manyWindows(count, n);
            Feature batch(prototype);
            Feature single(prototype);
            std::vector<DoubleVector> out(count, DoubleVector{-1.0, -2.0});
            const LogRecorder log;
            EXPECT_TRUE(batch.computeWindows(windows, out)) << n << ' ' << count;
            for (std::size_t i = 0; i < count; ++i) {
                DoubleVector expected{-1.0, -2.0};
                EXPECT_TRUE(single.compute(windows[i], expected));
                EXPECT_TRUE(sameBits(out[i], expected)) << n << ' ' << count << ' ' << i;
            }
        }
    }
}

TEST(Spectrum, SeveralWindowsAtOnceEqualOneByOneToTheBit) {
    expectWindowsEqualOneByOne(SpectrumFeature());
}

TEST(ReducedSpectrum, SeveralWindowsAtOnceEqualOneByOneToTheBit) {
    expectWindowsEqualOneByOne(SpectrumReducedFeature(8));
    expectWindowsEqualOneByOne(SpectrumReducedFeature(40));
}

TEST(Spectrum, SeveralWindowsAtOnceMustAllHaveTheLengthOfTheFirstEver) {
    for (const std::size_t odd : {0, 1, 8, 9}) {
        std::vector<DoubleVector> windows = manyWindows(10, 64);
        std::vector<DoubleVector> out(10);
        windows[odd] = noise(128, 36);
        const LogRecorder log;
        SpectrumFeature feature;
        EXPECT_FALSE(feature.computeWindows(windows, out));
        EXPECT_THAT(log.records(), ElementsAre(failedAssertion(c_szOtherSize, "AudioFeatureImpl"))) << odd;
    }
    SpectrumFeature feature;
    DoubleVector first;
    EXPECT_TRUE(feature.compute(noise(64, 37), first));
    const std::vector<DoubleVector> windows = manyWindows(9, 128);
    std::vector<DoubleVector> out(9);
    const LogRecorder log;
    EXPECT_FALSE(feature.computeWindows(windows, out));
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion(c_szOtherSize, "AudioFeatureImpl")));
}

}  // namespace
