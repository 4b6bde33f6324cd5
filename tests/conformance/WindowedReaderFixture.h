#pragma once

// What the tests of the windowed file reader share, over what those of the reader and of the windower do.
#include "ReaderFixture.h"
#include "WindowerFixture.h"

#include <murvane/audio/input/AudioWindowedFileReader.h>

namespace windowed_reader_test {

using reader_test::c_atEnd;
using reader_test::c_cannotSeek;
using reader_test::c_lastChunk;
using reader_test::c_willReopen;
using reader_test::opened;
using reader_test::ramp;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::TemporaryFolder;
using windower_test::Config;
using windower_test::config;
using Zantrix::Audio::AudioFileReader;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;

inline constexpr const char* c_szWindowed = "murvane.audio.WindowedAudioFileReader";
inline constexpr const char* c_szSource = "AudioWindowedFileReader";

inline const LogRecord c_notEnough{c_szWindowed, log4cplus::DEBUG_LOG_LEVEL, "New data not enough to make a new window",
                                   c_szSource, 133};
inline const LogRecord c_endOfWindows{c_szWindowed, log4cplus::DEBUG_LOG_LEVEL, "End of file reached", c_szSource, 134};

inline LogRecords traced(const char* operation, const LogRecords& inside = {}) {
    return testkit::traced(c_szWindowed, c_szSource, std::string("WindowedAudioFileReader::") + operation, inside);
}

inline LogRecords tracedReader(const char* operation, const LogRecords& inside = {}) {
    return reader_test::traced(operation, inside);
}

inline LogRecords tracedWindower(const char* operation) {
    return windower_test::traced(operation);
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
