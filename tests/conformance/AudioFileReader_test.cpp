#include "ReaderFixture.h"

#include <limits>
#include <sstream>

namespace {

using namespace reader_test;

// --- before and after opening ---

TEST_F(AudioFileReaderTest, BeginsWithNoFile) {
    AudioFileReader reader;
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    EXPECT_EQ(reader.getSamplingRate(), 0u);
    EXPECT_FALSE(reader.atEnd());
    EXPECT_EQ(reader.getClippingValue(), 0.999969);
    std::ostringstream os;
    EXPECT_EQ(&reader.getFileInfo(os), &os);
    EXPECT_EQ(os.str(), "");
}

TEST_F(AudioFileReaderTest, KnowsTheRateOfTheFile) {
    AudioFileReader reader;
    for (const int rate : {8000, 11025, 44100, 192000}) {
        EXPECT_TRUE(reader.setSourceAudioFile(fileOf(ramp(10), rate).c_str()));
        EXPECT_EQ(reader.getSamplingRate(), static_cast<std::size_t>(rate));
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        EXPECT_EQ(reader.getCurrentAudioTime(), 10 * (1.0 / rate));
    }
}

TEST_F(AudioFileReaderTest, LogsTheFormatOfTheFileItOpens) {
    AudioFileReader reader;
    const std::string path = rampFile(10);
    const std::string flac = fileOf(ramp(10), 8000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    LogRecorder log;
    EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.setSourceAudioFile(flac.c_str()));
    EXPECT_EQ(log.records(), (LogRecords{opened(path), opened(flac, "170002")}));
}

TEST_F(AudioFileReaderTest, RefusesAMissingFile) {
    AudioFileReader reader;
    const std::string path = m_folder / "missing.wav";
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_EQ(log.records(), LogRecords{failedToOpen(path)});
}

TEST_F(AudioFileReaderTest, TakesANullPathForAnEmptyOne) {
    AudioFileReader reader;
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(nullptr));
    EXPECT_FALSE(reader.setSourceAudioFile(""));
    EXPECT_EQ(log.records(), (LogRecords{failedToOpen(""), failedToOpen("")}));
}

TEST_F(AudioFileReaderTest, RefusesWhatIsNoAudioFile) {
    AudioFileReader reader;
    const std::string headerless = m_folder / "headerless.raw";
    testkit::writeBytes(headerless, std::string(1000, '\x11'));
    const std::string empty = m_folder / "empty.wav";
    testkit::writeBytes(empty, "");
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(headerless.c_str()));
    EXPECT_FALSE(reader.setSourceAudioFile(empty.c_str()));
    EXPECT_FALSE(reader.setSourceAudioFile(m_folder.path().c_str()));
    EXPECT_EQ(log.records(),
              (LogRecords{failedToOpen(headerless), failedToOpen(empty), failedToOpen(m_folder.path().string())}));
}

TEST_F(AudioFileReaderTest, RefusesStereoAndIsLeftClosed) {
    AudioFileReader reader;
    const std::string path = fileOf(ramp(20), 8000, 2);
    const std::size_t descriptors = openDescriptors();
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_EQ(log.take(), (LogRecords{opened(path), c_notMono}));
    EXPECT_EQ(openDescriptors(), descriptors);
    std::ostringstream os;
    EXPECT_EQ(reader.getFileInfo(os).rdbuf(), os.rdbuf());
    EXPECT_EQ(os.str(), "");
    EXPECT_FALSE(reader.gotoStart());
    EXPECT_EQ(log.take(), (LogRecords{c_willReopen, failedToOpen("")})) << "the name was not kept";
}

TEST_F(AudioFileReaderTest, RefusesAFileOfNoChannels) {
    AudioFileReader reader;
    const std::string path = m_folder / "none.wav";
    testkit::writeBytes(path, wav({}, 0));
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_THAT(log.records(), testing::Not(IsEmpty()));
    EXPECT_EQ(log.records().back().level, log4cplus::ERROR_LOG_LEVEL);
}

TEST_F(AudioFileReaderTest, ClosesTheOldFileEvenWhenTheNewOneCannotBeOpened) {
    AudioFileReader reader;
    const std::string path = rampFile(10);
    const std::size_t descriptors = openDescriptors();
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_EQ(openDescriptors(), descriptors + 1);
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile((m_folder / "missing").c_str()));
    EXPECT_EQ(openDescriptors(), descriptors);
    log.take();
    EXPECT_FALSE(reader.gotoStart());
    EXPECT_EQ(log.take(), (LogRecords{c_willReopen, failedToOpen("")}));
    EXPECT_FALSE(reader.gotoAudioTime(0.0));
    EXPECT_EQ(log.take(), LogRecords{c_cannotSeek});
}

TEST_F(AudioFileReaderTest, OpensOneFileAfterTheOther) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(10).c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    ASSERT_TRUE(reader.atEnd());
    ASSERT_TRUE(reader.setSourceAudioFile(fileOf(ramp(20, 500)).c_str()));
    EXPECT_FALSE(reader.atEnd());
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(20, 500)));
}

TEST_F(AudioFileReaderTest, ClosesItsFileWhenItGoes) {
    const std::string path = rampFile(10);
    const std::size_t descriptors = openDescriptors();
    {
        AudioFileReader reader;
        ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
        EXPECT_EQ(openDescriptors(), descriptors + 1);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(AudioFileReaderTest, OfNoFileDeliversOneEmptyChunk) {
    AudioFileReader reader;
    m_out = {1.0};
    LogRecorder log;
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_TRUE(reader.atEnd());
    EXPECT_FALSE(reader.getNextLinearFrames(m_out));
    EXPECT_EQ(log.records(), (LogRecords{c_lastChunk, c_atEnd}));
}

TEST_F(AudioFileReaderTest, OfNoFileDeliversNoSampleOfTheOneBefore) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(100).c_str()));
    ASSERT_TRUE(reader.setNbOfFramesToRead(0));
    LogRecorder log;
    ASSERT_FALSE(reader.setSourceAudioFile((m_folder / "missing").c_str()));
    log.take();
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty()) << "none of none frames were missing";
}

// --- chunks ---

TEST_F(AudioFileReaderTest, DeliversTheShortLastChunkWithTrue) {
    AudioFileReader reader;
    const std::string path = rampFile(2500);
    LogRecorder log;
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024)));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.128);
    EXPECT_FALSE(reader.atEnd());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024, 1024)));
    EXPECT_FALSE(reader.atEnd());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(452, 2048)));
    EXPECT_TRUE(reader.atEnd());
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 2500.0 / 8000.0);
    for (int i = 0; i < 2; ++i) {
        m_out = {1.0};
        EXPECT_FALSE(reader.getNextLinearFrames(m_out));
        EXPECT_THAT(m_out, IsEmpty());
    }
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 2500.0 / 8000.0);
    EXPECT_EQ(log.records(), (LogRecords{opened(path), c_lastChunk, c_atEnd, c_atEnd}));
}

TEST_F(AudioFileReaderTest, DeliversAnEmptyLastChunkWhenTheChunksFitTheFile) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2048).c_str()));
    LogRecorder log;
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, SizeIs(1024));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1024, 1024)));
    EXPECT_FALSE(reader.atEnd());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_TRUE(reader.atEnd());
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.256);
    EXPECT_FALSE(reader.getNextLinearFrames(m_out));
}

TEST_F(AudioFileReaderTest, DeliversOneEmptyChunkOfAFileWithoutSamples) {
    AudioFileReader reader;
    const std::string path = m_folder / "empty.wav";
    testkit::writeBytes(path, wav({}));
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_TRUE(reader.atEnd());
    EXPECT_FALSE(reader.getNextLinearFrames(m_out));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);

    EXPECT_FALSE(reader.getAllLinearFrames(m_out)) << "there is nothing to deliver";
    EXPECT_THAT(m_out, IsEmpty());
    m_out = {1.0};
    EXPECT_TRUE(reader.getAllLinearFrames(m_out)) << "the vector was not empty before";
    EXPECT_THAT(m_out, ElementsAre(1.0));
}

TEST_F(AudioFileReaderTest, ReadsInChunksOfTheSizeSet) {
    AudioFileReader reader;
    EXPECT_TRUE(reader.setNbOfFramesToRead(3));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(7).c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(3)));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(3, 3)));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1, 6)));
    EXPECT_FALSE(reader.getNextLinearFrames(m_out));
}

TEST_F(AudioFileReaderTest, KeepsItsChunksUntilTheNextRewindSeekOrOpen) {
    const std::string path = rampFile(3000);
    for (const std::size_t size : {std::size_t{10}, std::size_t{2000}, std::size_t{1} << 60}) {
        AudioFileReader reader;
        ASSERT_TRUE(reader.setNbOfFramesToRead(100));
        ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
        LogRecorder log;
        EXPECT_TRUE(reader.setNbOfFramesToRead(size));
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        EXPECT_THAT(m_out, ElementsAreArray(ramp(100)));
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        EXPECT_THAT(m_out, ElementsAreArray(ramp(100, 100)));
        EXPECT_FALSE(reader.atEnd());
        EXPECT_THAT(log.records(), IsEmpty());
    }
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.setNbOfFramesToRead(10));
    EXPECT_TRUE(reader.gotoStart());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(10)));
    EXPECT_TRUE(reader.setNbOfFramesToRead(2000));
    EXPECT_TRUE(reader.gotoAudioTime(0.005));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(2000, 40)));
    EXPECT_TRUE(reader.setNbOfFramesToRead(5));
    EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, SizeIs(5));
}

TEST_F(AudioFileReaderTest, ReadsNothingInChunksOfNothing) {
    AudioFileReader reader;
    EXPECT_TRUE(reader.setNbOfFramesToRead(0));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(10).c_str()));
    LogRecorder log;
    for (int i = 0; i < 3; ++i) {
        m_out = {1.0};
        EXPECT_TRUE(reader.getNextLinearFrames(m_out));
        EXPECT_THAT(m_out, IsEmpty());
        EXPECT_FALSE(reader.atEnd());
    }
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_TRUE(reader.getAllLinearFrames(m_out)) << "reads in chunks of its own";
    EXPECT_THAT(m_out, ElementsAreArray(ramp(10)));
}

TEST_F(AudioFileReaderTest, FailsWithoutThrowingWhereNoMemoryHoldsAChunk) {
    AudioFileReader reader;
    const std::string path = rampFile(10);
    EXPECT_TRUE(reader.setNbOfFramesToRead(std::numeric_limits<std::size_t>::max()));
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_THAT(log.records(), SizeIs(2));
    EXPECT_EQ(log.records()[1].level, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_FALSE(reader.gotoStart()) << "it is closed";
    EXPECT_TRUE(reader.setNbOfFramesToRead(1024));
    EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(10)));
}

// --- the whole file ---

TEST_F(AudioFileReaderTest, AppendsTheWholeFile) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2500).c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    m_out = {5.0, 6.0};
    EXPECT_TRUE(reader.getAllLinearFrames(m_out));
    std::vector<double> expected = ramp(2500);
    expected.insert(expected.begin(), {5.0, 6.0});
    EXPECT_THAT(m_out, ElementsAreArray(expected));
    EXPECT_TRUE(reader.atEnd());
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 2500.0 / 8000.0);
    m_out.clear();
    EXPECT_TRUE(reader.getAllLinearFrames(m_out)) << "as often as one likes";
    EXPECT_THAT(m_out, ElementsAreArray(ramp(2500)));
}

TEST_F(AudioFileReaderTest, ReadsTheWholeFileInChunksOf1024AndRestoresTheSize) {
    const std::string path = rampFile(2500);
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    AudioFileReader reader;
    ASSERT_TRUE(reader.setNbOfFramesToRead(100));
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    log.take();
    EXPECT_TRUE(reader.getAllLinearFrames(m_out));
    EXPECT_EQ(log.take(),
              traced("getAllLinearFrames",
                     joined(traced("gotoStart"), traced("getNextLinearFrames"), traced("getNextLinearFrames"),
                            traced("getNextLinearFrames", {c_lastChunk}), traced("getNextLinearFrames", {c_atEnd}))));
    EXPECT_TRUE(reader.gotoStart());
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, SizeIs(100));
}

TEST_F(AudioFileReaderTest, LeavesTheChunkSizeAt1024WhenTheWholeFileCannotBeRead) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setNbOfFramesToRead(100));
    m_out = {1.0};
    LogRecorder log;
    EXPECT_FALSE(reader.getAllLinearFrames(m_out));
    EXPECT_EQ(log.records(), (LogRecords{c_willReopen, failedToOpen(""),
                                         testkit::failedAssertion("AudioFileReader::gotoStart()", c_szSource, 244)}));
    EXPECT_THAT(m_out, ElementsAre(1.0));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2500).c_str()));
    EXPECT_TRUE(reader.getNextLinearFrames(m_out));
    EXPECT_THAT(m_out, SizeIs(1024));
}

TEST_F(AudioFileReaderTest, RewindsByItsOwnMeansToReadTheWholeFile) {
    struct Derived : AudioFileReader {
        bool gotoStart() override {
            ADD_FAILURE() << "the derived reader's rewind is not called";
            return false;
        }
        bool getNextLinearFrames(DoubleVector& out) override {
            ++chunks;
            return AudioFileReader::getNextLinearFrames(out);
        }
        int chunks = 0;
    };
    Derived reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2500).c_str()));
    EXPECT_TRUE(reader.getAllLinearFrames(m_out));
    EXPECT_EQ(reader.chunks, 4);
}

}  // namespace
