#pragma once

// What the tests of the file reader share.
#include <murvane/audio/input/AudioFileReader.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <sndfile.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace reader_test {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::TemporaryFolder;
using testkit::writeAudio;
using Zantrix::Audio::AudioFileReader;
using Zantrix::Math::DoubleVector;

inline constexpr const char* c_szCategory = "murvane.audio.AudioFileReader";
inline constexpr const char* c_szSource = "AudioFileReader";

inline LogRecord record(int level, const std::string& message, int line) {
    return {c_szCategory, level, message, c_szSource, line};
}

inline LogRecord opened(const std::string& path, const std::string& format = "10002") {
    return record(log4cplus::DEBUG_LOG_LEVEL, path + " : sfInfo.format=0x" + format, 106);
}

inline LogRecord failedToOpen(const std::string& path) {
    SF_INFO info{};
    EXPECT_EQ(sf_open(path.c_str(), SFM_READ, &info), nullptr);
    std::array<char, 2048> error{};
    sf_error_str(nullptr, error.data(), error.size());
    return record(log4cplus::ERROR_LOG_LEVEL, "failed to open " + path + ", " + error.data(), 99);
}

inline const LogRecord c_notMono =
    record(log4cplus::ERROR_LOG_LEVEL, "Audio file is not mono (more than 1 channel)", 110);
inline const LogRecord c_willReopen =
    record(log4cplus::WARN_LOG_LEVEL,
           "Audio file is not seekable, will need to close and then open the file to rewind it", 147);
inline const LogRecord c_cannotSeek =
    record(log4cplus::ERROR_LOG_LEVEL, "Audio file is not seekable, gotoAudioTime() is not supported", 177);
inline const LogRecord c_lastChunk =
    record(log4cplus::DEBUG_LOG_LEVEL, "Last chunk of audio read, end of file reached", 202);
inline const LogRecord c_atEnd = record(log4cplus::DEBUG_LOG_LEVEL, "End of file reached", 214);

inline LogRecords traced(const char* operation, const LogRecords& inside = {}) {
    return testkit::traced(c_szCategory, c_szSource, std::string("AudioFileReader::") + operation, inside);
}

/// Samples that 16 bits hold exactly, and that tell their own position.
inline std::vector<double> ramp(std::size_t count, std::size_t first = 0) {
    std::vector<double> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<double>((first + i) % 16000) / 32768.0;
    }
    return samples;
}

/// A mono WAV file of 16 bits with exactly these samples, laid out by hand.
inline std::string wav(const std::vector<std::int16_t>& samples, std::uint16_t channels = 1,
                       std::uint32_t rate = 8000) {
    const auto number = [](std::uint64_t value, int size) {
        std::string bytes;
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(value >> (8 * i));
        }
        return bytes;
    };
    const std::uint32_t dataSize = static_cast<std::uint32_t>(2 * samples.size());
    std::string bytes = "RIFF" + number(36 + dataSize, 4) + "WAVEfmt " + number(16, 4)  //
                        + number(1, 2)                                                  // PCM
                        + number(channels, 2) + number(rate, 4) + number(2u * channels * rate, 4) +
                        number(2u * channels, 2) + number(16, 2) + "data" + number(dataSize, 4);
    for (const std::int16_t sample : samples) {
        bytes += number(static_cast<std::uint16_t>(sample), 2);
    }
    return bytes;
}

inline std::string wavOfRamp(std::size_t count, std::size_t first = 0) {
    std::vector<std::int16_t> samples;
    for (const double sample : ramp(count, first)) {
        samples.push_back(static_cast<std::int16_t>(sample * 32768.0));
    }
    return wav(samples);
}

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

class AudioFileReaderTest : public testing::Test {
protected:
    std::string fileOf(const std::vector<double>& samples, int rate = 8000, int channels = 1, int format = 0x010002) {
        const std::string path = m_folder / ("audio" + std::to_string(m_files++));
        writeAudio(path, samples, rate, channels, format);
        return path;
    }

    std::string rampFile(std::size_t count) { return fileOf(ramp(count)); }

    TemporaryFolder m_folder;
    DoubleVector m_out;

private:
    int m_files = 0;
};

}  // namespace reader_test
