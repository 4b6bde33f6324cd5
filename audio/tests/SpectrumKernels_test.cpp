#include "features/SpectrumKernels.h"

#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/math/MathFourierTransform.h>
#include <testkit/AllocationCounter.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace Zantrix::Audio;
using Values = std::vector<double>;
using testkit::c_dInfinity;
using testkit::c_dNaN;
using testkit::sameBytes;

Values noise(std::size_t n, unsigned seed) {
    return testkit::noise(n, seed, 1.0);
}

Values weightsOf(std::size_t n) {
    Values weights = noise(n, 99);
    for (double& weight : weights) {
        weight = 0.75 + 0.25 * weight;
    }
    return weights;
}

Values scaled(Values values, double factor) {
    for (double& value : values) {
        value *= factor;
    }
    return values;
}

Values with(Values values, std::size_t place, double value) {
    values[place % values.size()] = value;
    return values;
}

/// Windows of every kind, in an order that brings each beside others.
std::vector<Values> windowsOfEveryKind(std::size_t n, std::size_t count) {
    std::vector<Values> windows;
    for (unsigned i = 0; windows.size() < count; ++i) {
        const Values ordinary = noise(n, i);
        const std::array kinds = {ordinary,
                                  with(ordinary, 1, c_dNaN),
                                  Values(n, 0.0),
                                  ordinary,
                                  with(ordinary, 3, c_dInfinity),
                                  Values(n, -0.0),
                                  scaled(ordinary, 1e-310),
                                  scaled(ordinary, 1e-160),
                                  scaled(ordinary, 1e-162),
                                  scaled(ordinary, 1e200),
                                  with(with(ordinary, 0, -c_dInfinity), 5, -c_dNaN),
                                  Values(n, 1.0),
                                  scaled(ordinary, std::numeric_limits<double>::max()),
                                  with(Values(n, 0.0), 7, std::numeric_limits<double>::denorm_min())};
        windows.insert(windows.end(), kinds.begin(), kinds.end());
    }
    windows.resize(count);
    return windows;
}

std::vector<const double*> pointersTo(const std::vector<Values>& rows) {
    std::vector<const double*> pointers;
    for (const Values& row : rows) {
        pointers.push_back(row.data());
    }
    return pointers;
}

std::vector<double*> pointersTo(std::vector<Values>& rows) {
    std::vector<double*> pointers;
    for (Values& row : rows) {
        pointers.push_back(row.data());
    }
    return pointers;
}

std::vector<Values> spectraOf(const std::vector<Values>& windows, const Values& weights,
                              std::span<const SpectrumKernel> kernels = spectrumKernels()) {
    const std::size_t n = weights.size();
    std::vector<Values> spectra(windows.size(), Values(n / 2, 12.5));
    Values scratch(spectrumScratchSize(n), c_dNaN);
    powerSpectra(pointersTo(windows), weights.data(), n, pointersTo(spectra), scratch, kernels);
    return spectra;
}

Values spectrumOfOne(Values window, const Values& weights) {
    for (std::size_t i = 0; i < window.size(); ++i) {
        window[i] *= weights[i];
    }
    powerSpectrum(window);
    window.resize(window.size() / 2);
    return window;
}

/// One case for each kernel of this processor.
class EverySpectrumKernel : public testing::TestWithParam<std::size_t> {
protected:
    static std::span<const SpectrumKernel> onlyThis() { return spectrumKernels().subspan(GetParam(), 1); }
};

INSTANTIATE_TEST_SUITE_P(OfThisProcessor, EverySpectrumKernel, testing::Range<std::size_t>(0, spectrumKernels().size()),
                         [](const auto& info) {
                             return std::to_string(spectrumKernels()[info.param].lanes) + "Lanes";
                         });

TEST_P(EverySpectrumKernel, GivesTheBytesOfOneWindowAtATimeForWindowsOfEveryKind) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        const Values weights = weightsOf(n);
        const std::vector<Values> windows = windowsOfEveryKind(n, 37);
        const std::vector<Values> spectra = spectraOf(windows, weights, onlyThis());
        for (std::size_t i = 0; i < windows.size(); ++i) {
            EXPECT_TRUE(sameBytes(spectra[i], spectrumOfOne(windows[i], weights))) << n << " " << i;
        }
    }
}

TEST_P(EverySpectrumKernel, GivesAWindowTheSameBytesWhateverStandsBesideIt) {
    const std::size_t n = 256;
    const Values weights = weightsOf(n);
    const Values window = noise(n, 7);
    const Values alone = spectraOf({window}, weights, onlyThis())[0];
    for (std::size_t place = 0; place < 9; ++place) {
        std::vector<Values> windows = windowsOfEveryKind(n, 9);
        windows[place] = window;
        EXPECT_TRUE(sameBytes(spectraOf(windows, weights, onlyThis())[place], alone)) << place;
    }
}

TEST_P(EverySpectrumKernel, WritesNothingBesideTheSpectraAndTheScratch) {
    const std::size_t guard = 16;
    for (const std::size_t n : {2, 4, 16, 64, 256}) {
        const Values weights = weightsOf(n);
        const std::vector<Values> windows = windowsOfEveryKind(n, 11);
        std::vector<Values> guarded(windows.size(), Values(n / 2 + 2 * guard, 12.5));
        std::vector<double*> spectra = pointersTo(guarded);
        for (double*& spectrum : spectra) {
            spectrum += guard;
        }
        // Every misalignment that an allocator might give.
        for (std::size_t shift = 0; shift < 8; ++shift) {
            Values scratch(shift + spectrumScratchSize(n) + guard, 12.5);
            powerSpectra(pointersTo(windows), weights.data(), n, spectra,
                         std::span<double>(scratch).subspan(shift, spectrumScratchSize(n)), onlyThis());
            EXPECT_EQ(std::count(scratch.begin(), scratch.begin() + static_cast<std::ptrdiff_t>(shift), 12.5),
                      static_cast<std::ptrdiff_t>(shift));
            EXPECT_EQ(std::count(scratch.end() - guard, scratch.end(), 12.5), static_cast<std::ptrdiff_t>(guard));
        }
        for (const Values& values : guarded) {
            EXPECT_EQ(std::count(values.begin(), values.begin() + guard, 12.5), static_cast<std::ptrdiff_t>(guard));
            EXPECT_EQ(std::count(values.end() - guard, values.end(), 12.5), static_cast<std::ptrdiff_t>(guard));
        }
    }
}

TEST(SpectrumKernels, PreferMoreLanesDownToTwo) {
    const std::span<const SpectrumKernel> kernels = spectrumKernels();
    ASSERT_FALSE(kernels.empty());
    for (std::size_t i = 1; i < kernels.size(); ++i) {
        EXPECT_LT(kernels[i].lanes, kernels[i - 1].lanes);
    }
    EXPECT_EQ(kernels.back().lanes, 2u);
}

TEST(PowerSpectra, WithoutKernelsAreComputedOneByOne) {
    const Values weights = weightsOf(64);
    const std::vector<Values> windows = windowsOfEveryKind(64, 5);
    const std::vector<Values> spectra = spectraOf(windows, weights, {});
    for (std::size_t i = 0; i < windows.size(); ++i) {
        EXPECT_TRUE(sameBytes(spectra[i], spectrumOfOne(windows[i], weights))) << i;
    }
}

TEST(PowerSpectra, AnyNumberOfWindowsGivesTheBytesOfOneAtATime) {
    const std::size_t n = 128;
    const Values weights = weightsOf(n);
    for (std::size_t count = 0; count <= 34; ++count) {
        const std::vector<Values> windows = windowsOfEveryKind(n, count);
        const std::vector<Values> spectra = spectraOf(windows, weights);
        ASSERT_EQ(spectra.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_TRUE(sameBytes(spectra[i], spectrumOfOne(windows[i], weights))) << count << " " << i;
        }
    }
}

TEST(PowerSpectra, WindowsOfOneSignalMayOverlap) {
    const std::size_t n = 256;
    const Values signal = noise(20 * 100 + n, 3);
    const Values weights = weightsOf(n);
    std::vector<Values> windows;
    std::vector<const double*> overlapping;
    for (std::size_t first = 0; first + n <= signal.size(); first += 100) {
        overlapping.push_back(&signal[first]);
        windows.emplace_back(&signal[first], &signal[first] + n);
    }
    std::vector<Values> spectra(windows.size(), Values(n / 2));
    Values scratch(spectrumScratchSize(n));
    powerSpectra(overlapping, weights.data(), n, pointersTo(spectra), scratch);
    for (std::size_t i = 0; i < windows.size(); ++i) {
        EXPECT_TRUE(sameBytes(spectra[i], spectrumOfOne(windows[i], weights))) << i;
    }
}

TEST(PowerSpectra, LengthsThatAreNoPowerOfTwoAreReportedForEveryWindow) {
    const testkit::LogRecord report = testkit::failedAssertion("isPowerOfTwo(n)", "MathFourierTransform");
    for (const std::size_t n : {0, 3, 5, 12, 100}) {
        const Values weights = weightsOf(n);
        const std::vector<Values> windows(9, noise(n, 1));
        testkit::LogRecorder log;
        const std::vector<Values> spectra = spectraOf(windows, weights);
        EXPECT_EQ(log.take(), std::vector(9, report)) << n;
        for (const Values& spectrum : spectra) {
            EXPECT_TRUE(sameBytes(spectrum, spectrumOfOne(windows[0], weights))) << n;
        }
    }
}

TEST(PowerSpectra, WindowsOfOneSampleHaveEmptySpectraAndAreNotReported) {
    const testkit::LogRecorder log;
    EXPECT_EQ(spectraOf(std::vector<Values>(9, {0.5}), {1.0}), std::vector<Values>(9));
    EXPECT_TRUE(log.records().empty());
}

TEST(PowerSpectra, AllocateNothingAfterTheFirstOfASize) {
    const std::size_t n = 256;
    const Values weights = weightsOf(n);
    const std::vector<Values> windows = windowsOfEveryKind(n, 15);
    std::vector<Values> spectra = spectraOf(windows, weights);
    const std::vector<const double*> from = pointersTo(windows);
    const std::vector<double*> to = pointersTo(spectra);
    Values scratch(spectrumScratchSize(n));
    Values one = windows[0];
    const testkit::AllocationCounter allocations;
    powerSpectra(from, weights.data(), n, to, scratch);
    powerSpectrum(one);
    EXPECT_EQ(allocations.count(), 0u);
}

TEST(PowerSpectrum, ValuesAreSharesOfThePowersOfTheDefinition) {
    for (std::size_t n = 2; n <= 512; n *= 2) {
        const Values window = noise(n, 5);
        std::vector<long double> powers(n / 2);
        long double total = 0;
        for (std::size_t k = 0; k < n / 2; ++k) {
            std::complex<long double> term = 0;
            for (std::size_t i = 0; i < n; ++i) {
                term += static_cast<long double>(window[i]) *
                        std::polar(1.0L, -2 * std::numbers::pi_v<long double> * static_cast<long double>(i * k % n) /
                                             static_cast<long double>(n));
            }
            powers[k] = std::norm(term);
            total += powers[k];
        }
        const Values spectrum = spectrumOfOne(window, Values(n, 1.0));
        for (std::size_t k = 0; k < n / 2; ++k) {
            EXPECT_NEAR(spectrum[k], static_cast<double>(powers[k] / total), 1e-15) << n << " " << k;
        }
    }
}

TEST(PowerSpectrum, SumsSquaresAndNormalisesInTheOrderOfTheTermsToTheBit) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        const Values window = noise(n, 6);
        Values terms = window;
        Zantrix::Math::realFourierTransform(terms);
        Values expected(n / 2);
        double total = 0.0;
        for (std::size_t k = 0; k < n / 2; ++k) {
            expected[k] =
                k == 0 ? terms[0] * terms[0] : terms[2 * k] * terms[2 * k] + terms[2 * k + 1] * terms[2 * k + 1];
            total += expected[k];
        }
        const double factor = 1.0 / total;
        for (double& value : expected) {
            value *= factor;
        }
        EXPECT_TRUE(sameBytes(spectrumOfOne(window, Values(n, 1.0)), expected)) << n;
    }
}

TEST(PowerSpectrum, AWeightedConstantLeaksIntoTheSecondBin) {
    const HannWindow hann(256);
    const Values spectrum = spectrumOfOne(Values(256, 0.3), hann.getWeights());
    EXPECT_NEAR(spectrum[0], 0.798122, 5e-7);
    EXPECT_NEAR(spectrum[1], 0.201876, 5e-7);
}

TEST(PowerSpectrum, SilenceStaysZero) {
    EXPECT_TRUE(sameBytes(spectrumOfOne(Values(256, 0.0), Values(256, 1.0)), Values(128, 0.0)));
    EXPECT_TRUE(sameBytes(spectrumOfOne(Values(256, -0.0), Values(256, 1.0)), Values(128, 0.0)));
    // So does a signal whose powers are too small to be told from zero.
    EXPECT_TRUE(sameBytes(spectrumOfOne(Values(256, 1e-200), Values(256, 1.0)), Values(128, 0.0)));
}

TEST(PowerSpectrum, ASampleThatIsNotANumberLeavesTheSameNaNEverywhere) {
    for (const double odd : {c_dNaN, -c_dNaN, c_dInfinity}) {
        Values window = noise(256, 8);
        window[17] = odd;
        EXPECT_TRUE(sameBytes(spectrumOfOne(window, Values(256, 1.0)), Values(128, c_dNaN)));
    }
}

TEST(PowerSpectrum, PowersBeyondTheRangeOfDoublesAreNotFinite) {
    // The term of frequency 0 overflows; its reciprocal is 0.
    const Values spectrum = spectrumOfOne(Values(256, 1e200), Values(256, 1.0));
    EXPECT_TRUE(std::isnan(spectrum[0]));
    EXPECT_TRUE(sameBytes(Values(spectrum.begin() + 1, spectrum.end()), Values(127, 0.0)));
}

TEST(PowerSpectrum, OtherLengthsHaveTheBinsBelowHalfTheirNumber) {
    testkit::LogRecorder log;
    // The terms of 1, 2, 3 are 6 and -1.5 + i sqrt(3)/2; only term 0 has a bin.
    EXPECT_EQ(spectrumOfOne({1.0, 2.0, 3.0}, Values(3, 1.0)), (Values{1.0}));
    // Those of 1, 0, 0, 0, 0, 0 are all 1.
    const Values six = spectrumOfOne({1.0, 0.0, 0.0, 0.0, 0.0, 0.0}, Values(6, 1.0));
    ASSERT_EQ(six.size(), 3u);
    for (const double value : six) {
        EXPECT_NEAR(value, 1.0 / 3.0, 1e-16);
    }
    const testkit::LogRecord report = testkit::failedAssertion("isPowerOfTwo(n)", "MathFourierTransform");
    EXPECT_EQ(log.take(), (std::vector{report, report}));
}

}  // namespace
