#pragma once

// What the tests of the windowed file reader share.
#include <murvane/audio/input/AudioWindowedFileReader.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>
#include <testkit/WavFixture.h>
#include <vector>

namespace windowed_reader_test {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::TemporaryFolder;
using Zantrix::Audio::AudioFileReader;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Config = LinearAudioWindower::Config;

inline constexpr const char* c_szReader = "murvane.audio.AudioFileReader";
inline constexpr const char* c_szWindowed = "murvane.audio.WindowedAudioFileReader";
inline constexpr const char* c_szSource = "AudioWindowedFileReader";

inline const LogRecord c_lastChunk{c_szReader, log4cplus::DEBUG_LOG_LEVEL,
                                   "Last chunk of audio read, end of file reached", "AudioFileReader", 202};
inline const LogRecord c_atEnd{c_szReader, log4cplus::DEBUG_LOG_LEVEL, "End of file reached", "AudioFileReader", 214};
inline const LogRecord c_cannotSeek{c_szReader, log4cplus::ERROR_LOG_LEVEL,
                                    "Audio file is not seekable, gotoAudioTime() is not supported", "AudioFileReader",
                                    177};
inline const LogRecord c_willReopen{
    c_szReader, log4cplus::WARN_LOG_LEVEL,
    "Audio file is not seekable, will need to close and then open the file to rewind it", "AudioFileReader", 147};
inline const LogRecord c_notEnough{c_szWindowed, log4cplus::DEBUG_LOG_LEVEL, "New data not enough to make a new window",
                                   c_szSource, 133};
inline const LogRecord c_endOfWindows{c_szWindowed, log4cplus::DEBUG_LOG_LEVEL, "End of file reached", c_szSource, 134};

inline LogRecord opened(const std::string& path) {
    return {c_szReader, log4cplus::DEBUG_LOG_LEVEL, path + " : sfInfo.format=0x10002", "AudioFileReader", 106};
}

inline LogRecords traced(const char* operation, const LogRecords& inside = {}) {
    return testkit::traced(c_szWindowed, c_szSource, std::string("WindowedAudioFileReader::") + operation, inside);
}

inline LogRecords tracedReader(const char* operation, const LogRecords& inside = {}) {
    return testkit::traced(c_szReader, "AudioFileReader", std::string("AudioFileReader::") + operation, inside);
}

inline LogRecords tracedWindower(const char* operation) {
    return testkit::traced("murvane.audio.LinearAudioWindower", "AudioLinearWindower",
                           std::string("LinearAudioWindower::") + operation);
}

inline Config config(std::uint64_t rate, std::uint64_t sizeMs, std::uint64_t overlapMs, bool suppressDC = false) {
    Config result;
    result.m_uiSampleRate = rate;
    result.m_uiWindowSizeMs = sizeMs;
    result.m_uiWindowOverlapMs = overlapMs;
    result.m_bSuppressDCOffset = suppressDC;
    return result;
}

/// Samples that 16 bits hold exactly, and that tell their own position.
inline std::vector<double> ramp(std::size_t count, std::size_t first = 0) {
    std::vector<double> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<double>((first + i) % 16000) / 32768.0;
    }
    return samples;
}

class WindowedAudioFileReaderTest : public testing::Test {
protected:
    std::string fileOf(const std::vector<double>& samples) {
        const std::string path = m_folder / ("audio" + std::to_string(m_files++) + ".wav");
        // Floating point, as the other encodings scale 1.0 to a little less.
        testkit::writeAudio(path, samples, 8000, 1, 0x010007);
        return path;
    }

    std::string rampFile(std::size_t count) { return fileOf(ramp(count)); }

    /// Expects as many windows of 128 samples, one hop apart, and then none.
    void expectWindows(WindowedAudioFileReader& reader, std::size_t count, std::size_t hop, std::size_t first = 0) {
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(reader.getNextWindow(m_window)) << i;
            ASSERT_THAT(m_window, ElementsAreArray(ramp(128, first + i * hop))) << i;
        }
        EXPECT_FALSE(reader.getNextWindow(m_window));
    }

    TemporaryFolder m_folder;
    DoubleVector m_window;

private:
    int m_files = 0;
};

}  // namespace windowed_reader_test
