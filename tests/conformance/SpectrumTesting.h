#pragma once

#include <murvane/audio/features/SpectrumFeatures.h>
#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

/// What the tests of the spectrum features share.
namespace spectrumtesting {

using testkit::c_dNaN;
using Zantrix::Audio::SpectrumFeature;
using Zantrix::Audio::SpectrumReducedFeature;
using Zantrix::Math::DoubleVector;

inline constexpr const char* c_szOtherSize = "m_pSignalWindow->getSize() == uiSizeFFT";

inline DoubleVector noise(std::size_t count, std::uint64_t seed) {
    const std::vector<double> samples = testkit::noise(count, seed);
    return DoubleVector(samples.begin(), samples.end());
}

inline DoubleVector spectrumOf(const DoubleVector& in) {
    SpectrumFeature feature;
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

inline double sumOf(const DoubleVector& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

}  // namespace spectrumtesting
