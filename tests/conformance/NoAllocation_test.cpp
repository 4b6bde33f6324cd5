// Windows are cut, read and weighed without a trip to the heap, once the first ones have sized the buffers.
#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/audio/input/AudioWindowedFileReader.h>
#include <testkit/AllocationCounter.h>
#include <testkit/LogRecorder.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using testkit::AllocationCounter;
using Zantrix::Audio::AudioFileReader;
using Zantrix::Audio::HannWindow;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Config = LinearAudioWindower::Config;

Config overlapping(bool suppressDC) {
    Config config;
    config.m_uiWindowSizeMs = 32;
    config.m_uiWindowOverlapMs = 20;
    config.m_bSuppressDCOffset = suppressDC;
    return config;
}

TEST(NoAllocation, CounterSeesWhatTheLibraryAllocates) {
    const AllocationCounter allocations;
    const HannWindow window(256);
    EXPECT_GT(allocations.count(), 0u);
    EXPECT_EQ(window.getSize(), 256.0);
}

TEST(NoAllocation, WindowerPushesAndPops) {
    for (const bool suppressDC : {false, true}) {
        for (const std::size_t piece : {1u, 100u, 1000u}) {
            LinearAudioWindower windower;
            ASSERT_TRUE(windower.configure(overlapping(suppressDC)));
            const std::vector<double> samples(piece, 0.25);
            DoubleVector window;
            const auto run = [&](std::size_t pushes) {
                std::size_t windows = 0;
                for (std::size_t i = 0; i < pushes; ++i) {
                    EXPECT_TRUE(windower.pushLinearAudio(samples.data(), samples.data() + piece));
                    while (windower.popWindow(window)) {
                        ++windows;
                    }
                }
                return windows;
            };
            run(20000 / piece);
            const AllocationCounter allocations;
            const std::size_t windows = run(200000 / piece);
            EXPECT_EQ(allocations.count(), 0u) << "pieces of " << piece;
            EXPECT_GT(windows, 2000u);

            ASSERT_TRUE(windower.reset());
            run(20000 / piece);
            EXPECT_EQ(allocations.count(), 0u) << "nor after a reset";
        }
    }
}

TEST(NoAllocation, ReaderReadsChunks) {
    // The end of a file is worth a record, which allocates, where its level is wanted.
    const testkit::LogRecorder warningsOnly(log4cplus::WARN_LOG_LEVEL);
    const testkit::TemporaryFolder folder;
    for (const int format : {0x010002, 0x010006, 0x010010}) {
        const std::string path = folder / "audio.wav";
        testkit::writeAudio(path, testkit::noise(100000, 1), 8000, 1, format);
        AudioFileReader reader;
        ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
        DoubleVector chunk;
        ASSERT_TRUE(reader.getNextLinearFrames(chunk));
        const AllocationCounter allocations;
        while (reader.getNextLinearFrames(chunk)) {}
        ASSERT_TRUE(reader.gotoStart());
        ASSERT_TRUE(reader.gotoAudioTime(1.0));
        while (reader.getNextLinearFrames(chunk)) {}
        EXPECT_EQ(allocations.count(), 0u) << std::hex << format;
    }
}

TEST(NoAllocation, WindowedReaderDeliversWindows) {
    // The end of a file is worth a record, which allocates, where its level is wanted.
    const testkit::LogRecorder warningsOnly(log4cplus::WARN_LOG_LEVEL);
    const testkit::TemporaryFolder folder;
    const std::string path = folder / "audio.wav";
    testkit::writeAudio(path, testkit::noise(100000, 1));
    for (const bool suppressDC : {false, true}) {
        for (const std::size_t factor : {1u, 4u, 50u}) {
            WindowedAudioFileReader reader;
            ASSERT_TRUE(reader.configure(overlapping(suppressDC)));
            ASSERT_TRUE(reader.setChunkReadFactor(factor));
            ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
            DoubleVector window;
            // Long enough for the queue to have been at its fullest.
            for (std::size_t i = 0; i < 50 + 10 * factor; ++i) {
                ASSERT_TRUE(reader.getNextWindow(window));
            }
            const AllocationCounter allocations;
            std::size_t windows = 0;
            while (reader.getNextWindow(window)) {
                ++windows;
            }
            EXPECT_EQ(allocations.count(), 0u) << "factor " << factor;
            EXPECT_GT(windows, 400u);

            ASSERT_TRUE(reader.gotoStart());
            while (reader.getNextWindow(window)) {}
            EXPECT_EQ(allocations.count(), 0u) << "nor in a second run";
        }
    }
}

TEST(NoAllocation, SignalWindowWeighs) {
    const HannWindow window(256);
    const AllocationCounter allocations;
    double sum = 0.0;
    for (std::size_t i = 0; i < 256; ++i) {
        sum += window.getWeight(i) + window.getWeights()[i] + window.getSize();
    }
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_NEAR(sum, 2 * 127.5 + 256.0 * 256.0, 1e-9);
}

}  // namespace
