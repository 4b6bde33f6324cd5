#include "ReaderFixture.h"

#include <testkit/Stream.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>

namespace {

using namespace reader_test;

// --- positions ---

TEST_F(AudioFileReaderTest, RewindsToTheFirstFrame) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1500).c_str()));
    while (reader.getNextLinearFrames(m_out)) {}
    LogRecorder log;
    EXPECT_TRUE(reader.gotoStart());
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_FALSE(reader.atEnd());
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024))) << "the buffer has its full size again";
}

TEST_F(AudioFileReaderTest, GoesToTheNearestFrame) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(10000).c_str()));
    const struct {
        double time;
        std::size_t frame;
    } cases[] = {{0.5, 4000},      {0.00006, 0},  {0.0000625, 1}, {0.0001, 1},   {0.49999, 4000},
                 {1.249875, 9999}, {-0.00006, 0}, {-0.0, 0},      {-0.00018, 0}, {0.1 + 0.2, 2400}};
    for (const auto& [time, frame] : cases) {
        EXPECT_TRUE(reader.gotoAudioTime(time)) << time;
        EXPECT_EQ(reader.getCurrentAudioTime(), static_cast<double>(frame) * (1.0 / 8000.0)) << time;
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        const std::size_t count = std::min<std::size_t>(1024, 10000 - frame);
        EXPECT_THAT(m_out, ElementsAreArray(ramp(count, frame))) << time;
        EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), static_cast<double>(frame + count) / 8000.0);
    }
}

TEST_F(AudioFileReaderTest, GoesOnAfterTheEndWhenSentBack) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1500).c_str()));
    while (reader.getNextLinearFrames(m_out)) {}
    EXPECT_TRUE(reader.gotoAudioTime(0.01));
    EXPECT_FALSE(reader.atEnd());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024, 80)));
}

TEST_F(AudioFileReaderTest, GoesToTheVeryEnd) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(4000).c_str()));
    EXPECT_TRUE(reader.gotoAudioTime(0.5));
    EXPECT_FALSE(reader.atEnd());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_TRUE(reader.atEnd());
}

TEST_F(AudioFileReaderTest, StaysWhereItIsWhenItCannotGoToATime) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(4000).c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    const double infinity = std::numeric_limits<double>::infinity();
    LogRecorder log;
    for (const double time : {0.6, -1.0, -0.0005, 1e15, 1e300, -1e300, infinity, -infinity, std::nan("")}) {
        EXPECT_FALSE(reader.gotoAudioTime(time)) << time;
        EXPECT_EQ(log.take(), LogRecords{c_cannotSeek}) << time;
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.128);
    }
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024, 1024)));

    while (reader.getNextLinearFrames(m_out)) {}
    EXPECT_FALSE(reader.gotoAudioTime(0.6));
    EXPECT_TRUE(reader.atEnd());
}

// --- copies ---

TEST_F(AudioFileReaderTest, CopiesShareTheFileAndItsPosition) {
    const std::string path = rampFile(5000);
    const std::size_t descriptors = openDescriptors();
    {
        AudioFileReader assigned;
        {
            AudioFileReader reader;
            ASSERT_TRUE(reader.setNbOfFramesToRead(100));
            ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
            ASSERT_TRUE(reader.getNextLinearFrames(m_out));
            AudioFileReader copy(reader);
            EXPECT_EQ(copy.getCurrentAudioTime(), 0.0125);
            EXPECT_EQ(copy.getSamplingRate(), 8000u);
            ASSERT_TRUE(copy.getNextLinearFrames(m_out));
            EXPECT_THAT(m_out, ElementsAreArray(ramp(100, 100)));
            EXPECT_EQ(reader.getCurrentAudioTime(), 0.0125) << "each keeps its own time";
            ASSERT_TRUE(reader.getNextLinearFrames(m_out));
            EXPECT_THAT(m_out, ElementsAreArray(ramp(100, 200))) << "but not its own position";
            assigned = copy;
            EXPECT_EQ(openDescriptors(), descriptors + 1);
        }
        EXPECT_EQ(openDescriptors(), descriptors + 1) << "the last holder has not gone";
        ASSERT_TRUE(assigned.getNextLinearFrames(m_out));
        EXPECT_THAT(m_out, ElementsAreArray(ramp(100, 300)));
        EXPECT_TRUE(assigned.gotoStart());
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(AudioFileReaderTest, ACopyThatOpensAnotherFileLeavesTheFirstOneOpen) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(3000).c_str()));
    AudioFileReader copy(reader);
    ASSERT_TRUE(copy.setSourceAudioFile(fileOf(ramp(5, 9000)).c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024)));
    ASSERT_TRUE(copy.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(5, 9000)));
}

TEST_F(AudioFileReaderTest, AssigningDropsTheFileThatWasOpen) {
    const std::string first = rampFile(10);
    const std::string second = rampFile(20);
    const std::size_t descriptors = openDescriptors();
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(first.c_str()));
    AudioFileReader other;
    ASSERT_TRUE(other.setSourceAudioFile(second.c_str()));
    EXPECT_EQ(openDescriptors(), descriptors + 2);
    reader = other;
    EXPECT_EQ(openDescriptors(), descriptors + 1);
    AudioFileReader& same = reader;
    reader = same;
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, SizeIs(20));
}

// --- streams that cannot seek ---

class AudioFileReaderStreamTest : public AudioFileReaderTest {
protected:
    AudioFileReaderStreamTest()
        : m_first(m_folder / "first", wavOfRamp(1500)), m_second(m_folder / "second", wavOfRamp(1200, 7)) {
        pointTo("first");
    }

    /// What the next opening of the path finds.
    void pointTo(const std::string& stream) {
        std::filesystem::remove(m_path);
        std::filesystem::create_symlink(m_folder / stream, m_path);
    }

    const std::string m_path = m_folder / "stream.wav";

private:
    testkit::Stream m_first;
    testkit::Stream m_second;
};

TEST_F(AudioFileReaderStreamTest, RewindsByOpeningAnew) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024)));
    pointTo("second");
    LogRecorder log;
    ASSERT_TRUE(reader.gotoStart());
    EXPECT_EQ(log.take(), (LogRecords{c_willReopen, opened(m_path)}));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024, 7)));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(176, 1031)));
    EXPECT_FALSE(reader.getNextLinearFrames(m_out));
}

TEST_F(AudioFileReaderStreamTest, LogsTheRewindBeforeTheOpening) {
    AudioFileReader reader;
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    EXPECT_EQ(log.take(), traced("setSourceAudioFile", {opened(m_path)}));
    pointTo("second");
    ASSERT_TRUE(reader.gotoStart());
    EXPECT_EQ(log.take(), traced("gotoStart", joined({c_willReopen}, traced("setSourceAudioFile", {opened(m_path)}))));
}

TEST_F(AudioFileReaderStreamTest, OpensAnewThroughTheVirtualTable) {
    struct Derived : AudioFileReader {
        bool setSourceAudioFile(const char* path) override {
            paths.push_back(path);
            return succeeds && AudioFileReader::setSourceAudioFile(path);
        }
        std::vector<std::string> paths;
        bool succeeds = true;
    };
    Derived reader;
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    LogRecorder log;
    reader.succeeds = false;
    EXPECT_FALSE(reader.gotoStart()) << "its result is that of the opening";
    reader.succeeds = true;
    pointTo("second");
    EXPECT_TRUE(reader.gotoStart());
    EXPECT_THAT(reader.paths, ElementsAre(m_path, m_path, m_path));
}

TEST_F(AudioFileReaderStreamTest, IsReadWholeAfterOpeningAnew) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    pointTo("second");
    LogRecorder log;
    EXPECT_TRUE(reader.getAllLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1200, 7)));
}

TEST_F(AudioFileReaderStreamTest, DoesNotGoToATime) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    LogRecorder log;
    EXPECT_FALSE(reader.gotoAudioTime(0.0));
    EXPECT_EQ(log.records(), LogRecords{c_cannotSeek});
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.128);
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(476, 1024))) << "it reads on";
}

TEST_F(AudioFileReaderStreamTest, IsLeftClosedWhenTheStreamIsGone) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(m_path.c_str()));
    std::filesystem::remove(m_path);
    LogRecorder log;
    EXPECT_FALSE(reader.gotoStart());
    EXPECT_EQ(log.take(), (LogRecords{c_willReopen, failedToOpen(m_path)}));
    EXPECT_FALSE(reader.gotoStart());
    EXPECT_EQ(log.take(), (LogRecords{c_willReopen, failedToOpen("")}));
}

// --- records ---

TEST_F(AudioFileReaderTest, TracesItsOperations) {
    const std::string path = rampFile(10);
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    {
        AudioFileReader reader;
        EXPECT_EQ(log.take(), testkit::traced(c_szCategory, c_szSource, "AudioFileReader ctor"));
        EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
        EXPECT_EQ(log.take(), traced("setSourceAudioFile", {opened(path)}));
        EXPECT_TRUE(reader.setNbOfFramesToRead(4));
        EXPECT_EQ(log.take(), traced("setNbOfFramesToRead"));
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        EXPECT_EQ(log.take(), traced("getNextLinearFrames", {c_lastChunk}));
        EXPECT_FALSE(reader.getNextLinearFrames(m_out));
        EXPECT_EQ(log.take(), traced("getNextLinearFrames", {c_atEnd}));
        EXPECT_TRUE(reader.gotoStart());
        EXPECT_EQ(log.take(), traced("gotoStart"));
        EXPECT_TRUE(reader.gotoAudioTime(0.001));
        EXPECT_EQ(log.take(), traced("gotoAudioTime"));
        EXPECT_FALSE(reader.gotoAudioTime(1.0));
        EXPECT_EQ(log.take(), traced("gotoAudioTime", {c_cannotSeek}));
        EXPECT_FALSE(reader.setSourceAudioFile(nullptr));
        EXPECT_EQ(log.take(), traced("setSourceAudioFile", {failedToOpen("")}));
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.001);
        std::ostringstream os;
        reader.getFileInfo(os);
        EXPECT_THAT(log.take(), IsEmpty());
    }
    EXPECT_EQ(log.take(), testkit::traced(c_szCategory, c_szSource, "AudioFileReader dtor"));
}

TEST_F(AudioFileReaderTest, LooksAtTheLevelOnlyWhenItIsMadeAndWhenAFileIsSet) {
    const auto pQuiet = std::make_unique<LogRecorder>(log4cplus::WARN_LOG_LEVEL);
    AudioFileReader reader;
    const std::string path = rampFile(10);
    LogRecorder log;
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(log.take(), IsEmpty()) << "the reader was made at a higher level";
    EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_EQ(log.take(), LogRecords{opened(path)});
    AudioFileReader copy(reader);
    EXPECT_TRUE(copy.getNextLinearFrames(m_out));
    EXPECT_EQ(log.take(), LogRecords{c_lastChunk}) << "a copy takes the level along";
}

}  // namespace
