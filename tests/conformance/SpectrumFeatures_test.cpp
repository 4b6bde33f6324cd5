#include "SpectrumTesting.h"

#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

using namespace spectrumtesting;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::c_dInfinity;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::sameBits;
using Zantrix::Cloneable;

namespace {

DoubleVector sine(std::size_t count, double frequencyHz) {
    const std::vector<double> samples = testkit::sine(count, frequencyHz);
    return DoubleVector(samples.begin(), samples.end());
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
    const Zantrix::Math::Xpr::FunctionAdaptor& function = feature;
    EXPECT_STREQ(function.getFunctionName(), "spectrum");
    EXPECT_EQ(function.getArgumentNames().size(), 1u);
    EXPECT_TRUE(function.getParameters().empty());
    EXPECT_STREQ(SpectrumFeature::getMemAccountName(), "FunctionAdaptor");
}

}  // namespace
