#include <murvane/audio/batch/AudioSetParser.h>
#include <testkit/LogRecorder.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::writeBytes;
using Zantrix::Audio::AudioSetParser;

class AudioSetEntries : public testing::Test {
protected:
    AudioSetEntries() : m_here(std::filesystem::canonical(m_folder.path()).string() + "/") {}

    testkit::TemporaryFolder m_folder;
    const std::string m_here;
};

LogRecord missing(const std::string& name, const std::string& kind) {
    return {"murvane.audio.AudioSetParser", log4cplus::ERROR_LOG_LEVEL,
            "Could not open  file " + name + " (" + kind + " path detected). File will be skipped.", "AudioSetParser"};
}

TEST_F(AudioSetEntries, AreFoundBesideAListThatNeedNotExist) {
    writeBytes(m_here + "a.wav", "");
    std::string file;
    EXPECT_TRUE(AudioSetParser::findAudioFile((m_here + "none.txt").c_str(), "a.wav", file));
    EXPECT_EQ(file, m_here + "a.wav");
    EXPECT_TRUE(AudioSetParser::findAudioFile("none.txt", (m_here + "a.wav").c_str(), file));
    EXPECT_EQ(file, m_here + "a.wav");
}

TEST_F(AudioSetEntries, ThatLeadNowhereAreReportedAndGiveNoName) {
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    std::string file = "before";
    EXPECT_FALSE(AudioSetParser::findAudioFile((m_here + "list.txt").c_str(), "a.wav", file));
    EXPECT_EQ(file, "");
    EXPECT_FALSE(AudioSetParser::findAudioFile("list.txt", (m_here + "a.wav").c_str(), file));
    EXPECT_FALSE(AudioSetParser::findAudioFile("list.txt", m_here.c_str(), file));
    EXPECT_THAT(log.records(), ElementsAre(missing("a.wav", "relative"), missing(m_here + "a.wav", "absolute"),
                                           missing(m_here, "absolute")));
}

TEST_F(AudioSetEntries, AreFoundByManyThreadsAtOnce) {
    const std::string list = m_here + "list.txt";
    for (int i = 0; i < 4; ++i) {
        writeBytes(m_here + std::to_string(i), "");
    }
    std::vector<std::string> wrong(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            const std::string name = std::to_string(i);
            for (int k = 0; k < 200; ++k) {
                std::string file;
                if (!AudioSetParser::findAudioFile(list.c_str(), name.c_str(), file) || file != m_here + name) {
                    wrong[i] += file + '\n';
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(wrong, ElementsAre(IsEmpty(), IsEmpty(), IsEmpty(), IsEmpty()));
}

}  // namespace
