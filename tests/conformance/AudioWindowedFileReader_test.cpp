#include "WindowedReaderFixture.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace windowed_reader_test;

TEST_F(WindowedAudioFileReaderTest, DropsTheSamplesThatDoNotFillAWindow) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    LogRecorder log;
    for (std::size_t i = 0; i < 7; ++i) {
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 128 * i)));
        EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 0.016 * static_cast<double>(i + 1));
        EXPECT_THAT(log.records(), IsEmpty());
    }
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), (LogRecords{c_lastChunk, c_notEnough, c_endOfWindows}));
    EXPECT_THAT(m_window, IsEmpty());
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), LogRecords{c_atEnd}) << "nothing new, not even too little";
    EXPECT_THAT(m_window, IsEmpty());
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 0.112);
}

TEST_F(WindowedAudioFileReaderTest, ReadsChunksOfAsManyWindowsAsTheFactorSays) {
    for (const std::size_t factor : {1u, 2u, 4u, 7u, 100u}) {
        WindowedAudioFileReader reader;
        ASSERT_TRUE(reader.configure(Config()));
        EXPECT_TRUE(reader.setChunkReadFactor(factor));
        ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_EQ(reader.AudioFileReader::getCurrentAudioTime(),
                  static_cast<double>(std::min<std::size_t>(1000, 128 * factor)) * (1.0 / 8000.0));
        ASSERT_TRUE(reader.gotoStart());
        expectWindows(reader, 7, 128);
    }
}

TEST_F(WindowedAudioFileReaderTest, KeepsItsFactorWhenConfiguredAnew) {
    WindowedAudioFileReader reader;
    EXPECT_TRUE(reader.setChunkReadFactor(3)) << "of the default configuration";
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    DoubleVector chunk;
    ASSERT_TRUE(reader.getNextLinearFrames(chunk));
    EXPECT_THAT(chunk, SizeIs(384));
    ASSERT_TRUE(reader.configure(config(8000, 10, 0)));
    ASSERT_TRUE(reader.gotoStart());
    ASSERT_TRUE(reader.getNextLinearFrames(chunk));
    EXPECT_THAT(chunk, SizeIs(240));
}

TEST_F(WindowedAudioFileReaderTest, ReadsChunksOf1024FramesUntilItIsConfigured) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(3000).c_str()));
    DoubleVector chunk;
    ASSERT_TRUE(reader.getNextLinearFrames(chunk));
    EXPECT_THAT(chunk, SizeIs(1024));
    EXPECT_FALSE(reader.getNextWindow(m_window)) << "and delivers no window";
}

TEST_F(WindowedAudioFileReaderTest, ReadsAtLeastOneFrame) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 0, 0)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(3).c_str()));
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_THAT(m_window, ElementsAreArray(ramp(1, i)));
    }
    EXPECT_FALSE(reader.getNextWindow(m_window));
}

TEST_F(WindowedAudioFileReaderTest, FindsNothingInChunksOfNoWindow) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    EXPECT_TRUE(reader.setChunkReadFactor(0));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    LogRecorder log;
    EXPECT_FALSE(reader.getNextWindow(m_window));
    EXPECT_EQ(log.take(), (LogRecords{c_notEnough, c_endOfWindows}));
    EXPECT_FALSE(reader.atEnd());
}

TEST_F(WindowedAudioFileReaderTest, LetsWindowsOverlapAcrossChunks) {
    for (const std::size_t factor : {1u, 4u}) {
        WindowedAudioFileReader reader;
        ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
        ASSERT_TRUE(reader.setChunkReadFactor(factor));
        ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
        expectWindows(reader, 11, 80);
        EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 0.016 + 10 * 0.010);
    }
}

TEST_F(WindowedAudioFileReaderTest, EndsWithAnEmptyChunkWhereTheWindowsFitTheFile) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1024).c_str()));
    LogRecorder log;
    expectWindows(reader, 8, 128);
    EXPECT_EQ(log.take(), (LogRecords{c_lastChunk, c_notEnough, c_endOfWindows}));
}

TEST_F(WindowedAudioFileReaderTest, DeliversNoWindowOfAFileShorterThanOne) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    for (const std::size_t count : {0u, 1u, 127u}) {
        ASSERT_TRUE(reader.setSourceAudioFile(rampFile(count).c_str()));
        EXPECT_FALSE(reader.getNextWindow(m_window)) << count;
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    }
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(128).c_str()));
    expectWindows(reader, 1, 128);
}

TEST_F(WindowedAudioFileReaderTest, GoesToATimeAndCountsOnFromThere) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(Config()));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(10000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_TRUE(reader.gotoAudioTime(1.0));
    EXPECT_EQ(reader.getCurrentAudioTime(), 1.0);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 8000)));
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 1.016);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 1.032);
}

TEST_F(WindowedAudioFileReaderTest, CountsFromTheTimeAskedForNotFromTheFrameReached) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(10000).c_str()));
    EXPECT_TRUE(reader.gotoAudioTime(0.50003));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.50003);
    EXPECT_EQ(reader.AudioFileReader::getCurrentAudioTime(), 0.5);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 4000)));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.50003 + 0.016);
    ASSERT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 4080)));
    EXPECT_DOUBLE_EQ(reader.getCurrentAudioTime(), 0.50003 + 0.026);
}

TEST_F(WindowedAudioFileReaderTest, GoesOnWhereItWasWhenItCannotGoToATime) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    LogRecorder log;
    for (const double time : {-1.0, 1.0, 1e300, std::nan("")}) {
        EXPECT_FALSE(reader.gotoAudioTime(time));
        EXPECT_EQ(log.take(), LogRecords{c_cannotSeek});
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.016);
    }
    expectWindows(reader, 10, 80, 80);
}

TEST_F(WindowedAudioFileReaderTest, RewindsWithAFreshWindower) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1000).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(reader.gotoStart());
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
        ASSERT_TRUE(reader.getNextWindow(m_window));
        EXPECT_THAT(m_window, ElementsAreArray(ramp(128)));
        EXPECT_EQ(reader.getCurrentAudioTime(), 0.016);
        ASSERT_TRUE(reader.gotoStart());
        expectWindows(reader, 11, 80);
    }
}

TEST_F(WindowedAudioFileReaderTest, StartsEachFileWithAFreshWindower) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(500).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    ASSERT_TRUE(reader.setSourceAudioFile(fileOf(ramp(300, 4000)).c_str()));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.0);
    expectWindows(reader, 3, 80, 4000);
}

TEST_F(WindowedAudioFileReaderTest, KeepsItsWindowerWhenAFileCannotBeOpened) {
    WindowedAudioFileReader reader;
    ASSERT_TRUE(reader.configure(config(8000, 16, 6)));
    ASSERT_TRUE(reader.setChunkReadFactor(2));
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(500).c_str()));
    ASSERT_TRUE(reader.getNextWindow(m_window));
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile((m_folder / "missing.wav").c_str()));
    EXPECT_EQ(reader.getCurrentAudioTime(), 0.016);
    EXPECT_FALSE(reader.setSourceAudioFile(nullptr));
    EXPECT_TRUE(reader.getNextWindow(m_window));
    EXPECT_THAT(m_window, ElementsAreArray(ramp(128, 80))) << "what is pending is still delivered";
}

}  // namespace
