#pragma once

// What the tests of the windower share.
#include <murvane/audio/input/AudioLinearWindower.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace windower_test {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::LogRecords;
using Zantrix::RefCountedObjPtr;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::SignalFeatureWithMemory;
using Config = LinearAudioWindower::Config;

inline constexpr const char* c_szCategory = "murvane.audio.LinearAudioWindower";
inline constexpr const char* c_szSource = "AudioLinearWindower";

inline Config config(std::uint64_t rate, std::uint64_t sizeMs, std::uint64_t overlapMs, bool suppressDC = false) {
    Config result;
    result.m_uiSampleRate = rate;
    result.m_uiWindowSizeMs = sizeMs;
    result.m_uiWindowOverlapMs = overlapMs;
    result.m_bSuppressDCOffset = suppressDC;
    return result;
}

inline LinearAudioWindower configured(const Config& how) {
    LinearAudioWindower windower;
    EXPECT_TRUE(windower.configure(how));
    return windower;
}

inline void push(LinearAudioWindower& windower, const std::vector<double>& samples) {
    EXPECT_TRUE(windower.pushLinearAudio(samples.data(), samples.data() + samples.size()));
}

/// first, first + 1, ...: a sample that tells its own position.
inline std::vector<double> ramp(std::size_t count, double first = 0.0) {
    std::vector<double> samples(count);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

inline std::vector<double> constant(std::size_t count, double value) {
    return std::vector<double>(count, value);
}

inline LogRecords traced(const char* operation, const LogRecords& inside = {}) {
    return testkit::traced(c_szCategory, c_szSource, std::string("LinearAudioWindower::") + operation, inside);
}

}  // namespace windower_test
