#include "WindowedReaderFixture.h"

#include <testkit/Stream.h>

#include <algorithm>
#include <filesystem>

namespace {

using namespace windowed_reader_test;

TEST_F(WindowedAudioFileReaderTest, LeavesItsChunksAloneWhenItRefusesAConfiguration) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 10, 0)));
    EXPECT_FALSE(reader.configure(config(8000, 32, 32)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    DoubleVector chunk;
    ASSERT_TRUE(reader.getNextLinearFrames(chunk));
    EXPECT_THAT(chunk, SizeIs(80));
}

TEST_F(WindowedAudioFileReaderTest, ChangesItsChunksOnlyWithTheNextOpenRewindOrSeek) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    ASSERT_TRUE(reader.setChunkReadFactor(1000000));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_EQ(reader.AudioFileReader::getCurrentAudioTime(), 0.032);
    ASSERT_TRUE(reader.setChunkReadFactor(2));
    ASSERT_TRUE(reader.gotoAudioTime(0.0));
    expectWindows(reader, 15, 128);
}

TEST_F(WindowedAudioFileReaderTest, ConfiguringDoesNotResetTheWindower) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setChunkReadFactor(2));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    ASSERT_TRUE(reader.configure(config(8000, 8, 0)));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(64, 128)));
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 0.024);
}

TEST_F(WindowedAudioFileReaderTest, CutsByTheConfiguredRateWhateverTheFiles) {
    const std::string path = m_folder / "44100.wav";
    testkit::writeAudio(path, ramp(1000), 44100);
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, SizeIs(128));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.016);
    EXPECT_EQ(reader.getSamplingRate(), 44100u);
}

TEST_F(WindowedAudioFileReaderTest, SuppressesTheDCOffsetAnewForEachRun) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 0, true)));
    std::vector<double> samples(256, 0.25);
    std::fill_n(samples.begin(), 128, 0.5);
    ASSERT_TRUE(reader.setSourceAudioFile(fileOf(samples).c_str()));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_THAT(m_window, Each(0.0));
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_THAT(m_window, Each(0.25 - 0.375));
        ASSERT_TRUE(reader.gotoStart());
    }
    ASSERT_TRUE(reader.gotoAudioTime(0.016));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, Each(0.0));
}

TEST_F(WindowedAudioFileReaderTest, ReadsTheWholeFileBesideItsWindows) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    DoubleVector all;
    EXPECT_TRUE(reader.getAllLinearFrames(all));
    EXPECT_THAT(all, ElementsAreArray(ramp(1000)));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.016) << "the windower has not been reset";
}

TEST_F(WindowedAudioFileReaderTest, TellsTheWindowersTimeAsATimeSource) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setChunkReadFactor(4));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    const Zantrix::Audio::TimeSource& time = reader;
    EXPECT_EQ(time.getCurrentAudioTime(), 0.016);
    EXPECT_EQ(time.getCurrentTime(), 0.016);
}

TEST_F(WindowedAudioFileReaderTest, ReadsItsChunksThroughTheVirtualTable) {
    struct Derived : WindowedAudioFileReader {
        bool getNextLinearFrames(DoubleVector& out) override {
            out.assign(200, static_cast<double>(++chunks));
            return chunks < 3;
        }
        int chunks = 0;
    };
    Derived reader;
    ASSERT_TRUE(reader.configure(Config()));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(reader.getNextWindow(m_window));
    }
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(reader.chunks, 3);
}

// --- copies ---

TEST_F(WindowedAudioFileReaderTest, ConstructedCopiesShareTheFileButNotWhatIsPending) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setChunkReadFactor(2));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(2000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));  // 256 frames read
    WindowedAudioFileReader copy(reader);
    EXPECT_EQ(copy.getCurrentAudioTime(), 0.0);
    ASSERT_TRUE(copy.getNextWindow(m_window));  // 256 more
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 256)));
    EXPECT_EQ(copy.getCurrentAudioTime(), 0.016);
    EXPECT_EQ(copy.AudioFileReader::getCurrentAudioTime(), 0.064);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 80)));

    ASSERT_TRUE(copy.configure(Config()));
    ASSERT_TRUE(copy.gotoStart());
    DoubleVector chunk;
    ASSERT_TRUE(copy.getNextLinearFrames(chunk));
    EXPECT_THAT(chunk, SizeIs(256)) << "the factor came along";
}

TEST_F(WindowedAudioFileReaderTest, AssignedCopiesTakeOverWhatIsPending) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    WindowedAudioFileReader copy;
    copy = reader;
    EXPECT_EQ(copy.getCurrentAudioTime(), 0.016);
    expectWindows(copy, 10, 80, 80);
}

// --- streams that cannot seek ---

TEST_F(WindowedAudioFileReaderTest, RewindsAStreamByOpeningItAnewAsAWindowedReader) {
    testkit::Stream first(m_folder / "first", testkit::readBytes(rampFile(500)));
    testkit::Stream second(m_folder / "second", testkit::readBytes(fileOf(ramp(300, 4000))));
    const std::string path = m_folder / "stream.wav";
    std::filesystem::create_symlink(m_folder / "first", path);

    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    LogRecorder log(log4cplus::DEBUG_LOG_LEVEL);
    EXPECT_FALSE(reader.gotoAudioTime(0.0));
    EXPECT_EQ(log.take(), LogRecords{c_cannotSeek});
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.016);

    std::filesystem::remove(path);
    std::filesystem::create_symlink(m_folder / "second", path);
    {
        LogRecorder trace(log4cplus::TRACE_LOG_LEVEL, c_szWindowed);
        EXPECT_TRUE(reader.gotoStart());
        // The records of the file reader go to the other recorder.
        EXPECT_EQ(trace.records(), traced("gotoStart", traced("setSourceAudioFile")));
    }
    ASSERT_THAT(log.records(), SizeIs(2));
    EXPECT_EQ(log.records()[0], c_willReopen);
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    expectWindows(reader, 3, 80, 4000);
}

// --- records ---

TEST_F(WindowedAudioFileReaderTest, TracesItsOperations) {
    const std::string path = fileOf(ramp(150));
    testkit::writeAudio(path, ramp(150));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    WindowedAudioFileReader reader;
    EXPECT_EQ(log.take(),
              joined(testkit::traced(reader_test::c_szCategory, reader_test::c_szSource, "AudioFileReader ctor"),
                     testkit::traced(c_szWindowed, c_szSource, "WindowedAudioFileReader ctor")));
    EXPECT_TRUE(reader.configure(Config()));
    EXPECT_EQ(log.take(),
              traced("configure", joined(tracedWindower("configure"),
                                         traced("setChunkReadFactor", tracedReader("setNbOfFramesToRead")))));
    EXPECT_FALSE(reader.configure(config(8000, 16, 16)));
    EXPECT_EQ(log.take(), traced("configure", tracedWindower("configure")));
    EXPECT_TRUE(reader.configure(Config()));
    log.take();
    EXPECT_TRUE(reader.setChunkReadFactor(1));
    EXPECT_EQ(log.take(), traced("setChunkReadFactor", tracedReader("setNbOfFramesToRead")));
    EXPECT_TRUE(reader.setSourceAudioFile(path.c_str()));
    EXPECT_EQ(log.take(), traced("setSourceAudioFile", tracedReader("setSourceAudioFile", {opened(path)})));
    EXPECT_TRUE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(),
              traced("getNextWindow", joined(tracedWindower("popWindow"), tracedReader("getNextLinearFrames"),
                                             tracedWindower("pushLinearAudio"), tracedWindower("popWindow"))));
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), traced("getNextWindow",
                                 joined(tracedWindower("popWindow"), tracedReader("getNextLinearFrames", {c_lastChunk}),
                                        tracedWindower("pushLinearAudio"), tracedWindower("popWindow"),
                                        LogRecords{c_notEnough, c_endOfWindows})));
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), traced("getNextWindow",
                                 joined(tracedWindower("popWindow"), tracedReader("getNextLinearFrames", {c_atEnd}))));
    EXPECT_TRUE(reader.gotoStart());
    EXPECT_EQ(log.take(), traced("gotoStart", tracedReader("gotoStart")));
    EXPECT_TRUE(reader.gotoAudioTime(0.01));
    EXPECT_EQ(log.take(), traced("gotoAudioTime", tracedReader("gotoAudioTime")));
    EXPECT_GT(reader.getCurrentAudioTime(), 0.0);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(WindowedAudioFileReaderTest, PopsWithoutReadingWhileAWindowIsThere) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setChunkReadFactor(2));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), traced("getNextWindow", tracedWindower("popWindow")));
}

}  // namespace
