#pragma once

// What the tests of the file evaluator share.
#include "ReaderFixture.h"

#include <murvane/audio/batch/AudioFileEvaluator.h>
#include <testkit/WavBytes.h>

#include <functional>

namespace evaluator_test {

using reader_test::c_atEnd;
using reader_test::c_lastChunk;
using reader_test::c_notMono;
using reader_test::failedToOpen;
using reader_test::opened;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::failedAssertion;
using testkit::joined;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::readBytes;
using testkit::TemporaryFolder;
using testkit::writeBytes;
using Zantrix::StringVector;
using Zantrix::Audio::AudioFileEvaluator;
using Zantrix::Math::DoubleVector;

using Channels = std::vector<DoubleVector>;
using Samples = std::vector<std::int16_t>;

inline LogRecord record(int level, const std::string& message) {
    return {"murvane.audio.AudioFileEvaluator", level, message, "AudioFileEvaluator"};
}

inline LogRecord banner(const std::string& path) {
    const std::string rule = "**************************************************";
    return record(log4cplus::INFO_LOG_LEVEL, rule + "\nProcessing file: " + path + "\n" + rule);
}

inline LogRecord error(const std::string& message) {
    return record(log4cplus::ERROR_LOG_LEVEL, message);
}

inline LogRecord debug(const std::string& message) {
    return record(log4cplus::DEBUG_LOG_LEVEL, message);
}

inline LogRecord failed(const std::string& condition) {
    return failedAssertion(condition, "AudioFileEvaluator");
}

inline const LogRecord c_scaling = debug("Scaling to ushort...");

inline LogRecord pushed(std::size_t first, std::size_t end) {
    return debug("Pushed values for samples " + std::to_string(first) + " to " + std::to_string(end));
}

inline LogRecord channelCountChanged(const std::string& path) {
    return error("evaluateWindow() returned a different number of channels. Can't continue with file: " + path);
}

inline const char* const c_szSizeOfData =
    "(m_fmt.m_usSignBitsPerSample/8) *(uiSizeOfData*8/m_fmt.m_usSignBitsPerSample) == uiSizeOfData";
inline const char* const c_szNbSamples = "uiNbSamples == m_vValues.size()";

inline std::string bytesOf(const Samples& samples) {
    std::string bytes;
    for (const std::int16_t sample : samples) {
        bytes += wav::u16(static_cast<std::uint16_t>(sample));
    }
    return bytes;
}

inline std::string fmt(unsigned channels, unsigned rate, unsigned code = 1, unsigned bits = 16,
                       const std::string& more = "") {
    const unsigned align = bits / 8 * channels;
    return wav::chunk("fmt ", wav::u16(code) + wav::u16(channels) + wav::u32(rate) + wav::u32(rate * align) +
                                  wav::u16(align) + wav::u16(bits) + more);
}

/// A WAV file of 16-bit PCM, its samples interleaved.
inline std::string wavOf(const Samples& samples, unsigned channels = 1, unsigned rate = 8000) {
    return wav::file(fmt(channels, rate) + wav::chunk("data", bytesOf(samples)));
}

/// A strategy made of a function. It remembers what it was asked.
class FunctionStrategy final : public AudioFileEvaluator::Strategy {
public:
    using Function = std::function<void(const DoubleVector&, Channels&)>;

    explicit FunctionStrategy(Function function) : m_function(std::move(function)) {}

    bool evaluateWindow(const DoubleVector& in_window, Channels& out_channels) override {
        EXPECT_THAT(out_channels, IsEmpty());
        m_asked.push_back(in_window.size());
        m_function(in_window, out_channels);
        return false;  // means nothing
    }

    bool getProbabilitiesInfo(StringVector& out_info) override {
        EXPECT_THAT(out_info, IsEmpty());
        m_asked.push_back(c_namesAsked);
        out_info.push_back("a");
        return m_knowsNames;
    }

    static constexpr std::size_t c_namesAsked = static_cast<std::size_t>(-1);

    std::vector<std::size_t> m_asked;  ///< block sizes, and c_namesAsked
    bool m_knowsNames = true;

private:
    Function m_function;
};

/// One channel of this value.
inline FunctionStrategy constant(double value) {
    return FunctionStrategy(
        [=](const DoubleVector& block, Channels& out) { out.push_back(DoubleVector(block.size(), value)); });
}

/// One channel for each of the values, which are held for the whole block.
inline FunctionStrategy constants(const std::vector<double>& values) {
    return FunctionStrategy([=](const DoubleVector& block, Channels& out) {
        for (const double value : values) {
            out.push_back(DoubleVector(block.size(), value));
        }
    });
}

class AudioFileEvaluatorTest : public testing::Test {
protected:
    AudioFileEvaluatorTest() {
        std::filesystem::create_directory(m_folder / "in");
        std::filesystem::create_directory(m_folder / "out");
        writeBytes(m_input, wavOf({1, -2, 3, -4, 5, 32767, -32768, 0}));
    }

    /// An evaluator that turns in/call1.wav into out/call1.prob.wav.
    AudioFileEvaluator evaluatorWith(AudioFileEvaluator::Strategy& strategy, unsigned long long window = 4) {
        AudioFileEvaluator evaluator;
        EXPECT_TRUE(evaluator.configure(window, &strategy, "prob", (m_folder / "out").c_str()));
        return evaluator;
    }

    /// What the evaluator makes of the input.
    std::string evaluated(AudioFileEvaluator::Strategy& strategy, unsigned long long window = 4) {
        return evaluatorWith(strategy, window).processFile(m_input.c_str()) ? readBytes(m_output) : "failed";
    }

    std::vector<std::string> namesIn(const std::string& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder / folder)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    TemporaryFolder m_folder;
    const std::string m_input = m_folder / "in/call1.wav";
    const std::string m_output = m_folder / "out/call1.prob.wav";
};

}  // namespace evaluator_test
