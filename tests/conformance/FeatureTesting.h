#pragma once

#include <murvane/math/SignalFeature.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/SpecialNumbers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

/// What the tests of the feature families share.
namespace featuretesting {

using testkit::c_dInfinity;
using testkit::c_dNaN;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::SignalFeature;

/// The values of one computation, which must succeed.
inline DoubleVector valuesOf(SignalFeature& feature, const DoubleVector& in) {
    DoubleVector out;
    EXPECT_TRUE(feature.compute(in, out));
    return out;
}

/// Equal to the bit, but for the payload of a NaN.
MATCHER_P(IsIdenticalTo, expected, "is, value by value, " + testing::PrintToString(expected)) {
    return testkit::sameBits(arg, expected);
}

/// A clone, which must be of the very type of the original.
template <typename F>
std::unique_ptr<F> cloneOf(const F& feature) {
    std::unique_ptr<Zantrix::Cloneable> pClone(feature.clone());
    const Zantrix::Cloneable& clone = *pClone;
    EXPECT_EQ(typeid(clone), typeid(feature));
    auto* pFeature = dynamic_cast<F*>(pClone.get());
    if (pFeature != nullptr) {
        pClone.release();
    }
    return std::unique_ptr<F>(pFeature);
}

/// `count` values 1, 2, 3 ... scaled to sum to 1: a spectrum whose bins all differ.
inline DoubleVector risingSpectrum(std::size_t count) {
    DoubleVector spectrum;
    for (std::size_t k = 0; k < count; ++k) {
        spectrum.push_back(2.0 * static_cast<double>(k + 1) / static_cast<double>(count * (count + 1)));
    }
    return spectrum;
}

/// 0, 1, 2 ... so that every value tells its bin.
inline DoubleVector binNumbers(std::size_t count) {
    DoubleVector values;
    for (std::size_t k = 0; k < count; ++k) {
        values.push_back(static_cast<double>(k));
    }
    return values;
}

/// `count` zeros but for one value.
inline DoubleVector singleBin(std::size_t count, std::size_t bin, double value = 1.0) {
    DoubleVector spectrum(count, 0.0);
    spectrum[bin] = value;
    return spectrum;
}

/// Inputs that no caller should pass, of changing lengths.
inline std::vector<DoubleVector> hostileInputs() {
    const double denormal = std::numeric_limits<double>::denorm_min();
    std::vector<DoubleVector> inputs;
    for (const double value :
         {0.0, -0.0, 1.0, -1.0, c_dNaN, c_dInfinity, -c_dInfinity, 1e300, -1e300, denormal, -denormal}) {
        for (const std::size_t count : {1, 2, 3, 4, 5, 11, 64}) {
            inputs.emplace_back(count, value);
        }
        DoubleVector mixed = risingSpectrum(128);
        mixed[0] = mixed[60] = mixed[127] = value;
        inputs.push_back(mixed);
        inputs.emplace_back();
    }
    return inputs;
}

/// What holds for every feature, whatever its input: what `out` held stays, nothing depends on it, `out` may be the
/// input itself, the input stays, and clones and copies go on as the original does.
template <typename F>
void expectFeatureManners(const F& initial, const std::vector<DoubleVector>& inputs) {
    const testkit::LogRecorder recorder;
    F feature(initial);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE("input " + std::to_string(i) + ": " + testing::PrintToString(inputs[i]));
        const DoubleVector in = inputs[i];
        const std::unique_ptr<F> pClone = cloneOf(feature);
        F assigned(initial);
        assigned = feature;
        F copy(feature);

        DoubleVector values;
        const bool ok = feature.compute(in, values);
        EXPECT_THAT(in, IsIdenticalTo(inputs[i]));

        DoubleVector behind = {7.0, 8.0};
        DoubleVector expected = behind;
        expected.append(values);
        EXPECT_EQ(pClone->compute(in, behind), ok);
        EXPECT_THAT(behind, IsIdenticalTo(expected));

        DoubleVector inPlace = in;
        expected = in;
        expected.append(values);
        EXPECT_EQ(assigned.compute(inPlace, inPlace), ok);
        EXPECT_THAT(inPlace, IsIdenticalTo(expected));

        DoubleVector again;
        EXPECT_EQ(copy.compute(in, again), ok);
        EXPECT_THAT(again, IsIdenticalTo(values));
        feature = *pClone;
    }
}

template <typename F>
void expectFeatureManners(const F& initial) {
    expectFeatureManners(initial, hostileInputs());
}

/// A record of the features' own logger.
inline testkit::LogRecord featureRecord(int level, const std::string& message) {
    return {"murvane.audio.AudioFeatureImpl", level, message, "AudioFeatureImpl"};
}

inline testkit::LogRecord failedFeatureAssertion(const std::string& text) {
    return testkit::failedAssertion(text, "AudioFeatureImpl");
}

}  // namespace featuretesting
