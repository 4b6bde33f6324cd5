#include "SpectrumTesting.h"

#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

using namespace spectrumtesting;
using testing::ElementsAre;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::sameBits;

namespace {

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
