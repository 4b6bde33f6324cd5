#pragma once

// What the tests of audio sets share.
#include <murvane/audio/batch/AudioSetParser.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace audio_set_test {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::LogRecords;
using testkit::TemporaryFolder;
using testkit::writeBytes;
using Zantrix::Audio::AudioSetParser;

inline constexpr const char* c_szVariable = "ZANTRIX_CPA_DATA";

inline LogRecord parserRecord(int level, const std::string& message) {
    return {"murvane.audio.AudioSetParser", level, message, "AudioSetParser"};
}

inline LogRecord trying(const std::string& path) {
    return parserRecord(log4cplus::DEBUG_LOG_LEVEL, "Trying absolute path: " + path);
}

inline LogRecord missing(const std::string& name, const std::string& kind) {
    return parserRecord(log4cplus::ERROR_LOG_LEVEL,
                        "Could not open  file " + name + " (" + kind + " path detected). File will be skipped.");
}

inline LogRecord badName(const std::string& name) {
    return parserRecord(log4cplus::ERROR_LOG_LEVEL, "Error in filename " + name + ". File will be skipped.");
}

inline LogRecord noList(const std::string& name) {
    return parserRecord(log4cplus::ERROR_LOG_LEVEL, "Could not open file " + name + " containing file set to parse");
}

/// Works in a folder with the empty folders "sets" and "data" and without the variable that names a data folder.
class AudioSetTest : public testing::Test {
protected:
    AudioSetTest()
        : m_here(std::filesystem::canonical(m_folder.path()).string() + "/"),
          m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(m_here);
        std::filesystem::create_directory("sets");
        std::filesystem::create_directory("data");
        ::unsetenv(c_szVariable);
    }

    ~AudioSetTest() override {
        ::unsetenv(c_szVariable);
        std::filesystem::current_path(m_before);
    }

    /// Makes empty files.
    static void make(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            writeBytes(name, "");
        }
    }

    TemporaryFolder m_folder;
    const std::string m_here;  ///< canonical, with the last "/"

private:
    const std::filesystem::path m_before;
};

}  // namespace audio_set_test
