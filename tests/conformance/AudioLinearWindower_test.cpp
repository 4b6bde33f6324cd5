#include "WindowerFixture.h"

#include <cmath>
#include <limits>

namespace {

using namespace windower_test;

TEST(LinearAudioWindower, BeginsWithTheDefaultConfiguration) {
    const Config byDefault;
    EXPECT_EQ(byDefault.m_uiSampleRate, 8000u);
    EXPECT_EQ(byDefault.m_uiWindowSizeMs, 16u);
    EXPECT_EQ(byDefault.m_uiWindowOverlapMs, 0u);
    EXPECT_FALSE(byDefault.m_bSuppressDCOffset);

    const LinearAudioWindower windower;
    EXPECT_EQ(windower.getConfig().m_uiSampleRate, 8000u);
    EXPECT_EQ(windower.getConfig().m_uiWindowSizeMs, 16u);
    EXPECT_EQ(windower.getConfig().m_uiWindowOverlapMs, 0u);
    EXPECT_FALSE(windower.getConfig().m_bSuppressDCOffset);
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0.0);
}

TEST(LinearAudioWindower, ItsConfigurationTellsTheLengthsInSamples) {
    struct Case {
        std::uint64_t rate;
        std::uint64_t sizeMs;
        std::uint64_t overlapMs;
        std::uint64_t size;
        std::uint64_t overlap;
    };
    constexpr std::uint64_t half = std::uint64_t{1} << 63;
    for (const Case& c :
         {Case{8000, 16, 6, 128, 48}, Case{11025, 16, 6, 176, 66}, Case{8000, 0, 0, 1, 0}, Case{0, 16, 16, 1, 0},
          Case{999, 1, 1, 1, 0}, Case{8001, 16, 16, 128, 128}, Case{half, 3, 2, half / 1000, 0}}) {
        Config config;
        config.m_uiSampleRate = c.rate;
        config.m_uiWindowSizeMs = c.sizeMs;
        config.m_uiWindowOverlapMs = c.overlapMs;
        EXPECT_EQ(config.getWindowSizeInSamples(), c.size) << c.rate << ' ' << c.sizeMs;
        EXPECT_EQ(config.getWindowOverlapInSamples(), c.overlap) << c.rate << ' ' << c.overlapMs;
    }
}

TEST(LinearAudioWindower, PopsNothingBeforeItIsConfigured) {
    LinearAudioWindower windower;
    push(windower, ramp(1000));
    DoubleVector window{1.0, 2.0};
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_THAT(window, IsEmpty());
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);

    ASSERT_TRUE(windower.configure(Config()));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128))) << "what was pushed before still counts";
}

TEST(LinearAudioWindower, PopsAWindowAsSoonAsItsLastSampleIsThere) {
    LinearAudioWindower windower = configured(Config());
    DoubleVector window{7.0};
    push(windower, ramp(127));
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_THAT(window, IsEmpty());

    push(windower, {127.0});
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128)));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.016);

    EXPECT_FALSE(windower.popWindow(window));
    push(windower, ramp(128, 1000.0));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 1000.0))) << "nothing was left in between";
}

TEST(LinearAudioWindower, TakesAtLeastOneSampleForAWindow) {
    LinearAudioWindower windower = configured(config(8000, 0, 0));
    push(windower, {1.0, 2.0});
    DoubleVector window;
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(1.0));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0) << "the time goes by milliseconds, of which there are none";
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(2.0));
    EXPECT_FALSE(windower.popWindow(window));

    ASSERT_TRUE(windower.configure(config(0, 16, 0)));
    push(windower, {3.0});
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(3.0));
}

TEST(LinearAudioWindower, ComputesLengthsModuloTwoToThe64) {
    // 2^61 * 8 is 2^64, of which nothing is left.
    LinearAudioWindower windower = configured(config(std::uint64_t{1} << 61, 8, 0));
    push(windower, {1.0, 2.0});
    DoubleVector window;
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(1.0));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.008);

    // (2^64 - 1) * 2^63 leaves 2^63: a window that never fills, of which nothing overlaps.
    EXPECT_TRUE(windower.configure(
        config(std::uint64_t{1} << 63, std::numeric_limits<std::uint64_t>::max(), std::uint64_t{1} << 62)));
    EXPECT_FALSE(windower.popWindow(window));
}

TEST(LinearAudioWindower, StoresAConfigurationItRefuses) {
    LinearAudioWindower windower;
    LogRecorder log;
    EXPECT_FALSE(windower.configure(config(8001, 16, 16, true)));
    EXPECT_EQ(windower.getConfig().m_uiSampleRate, 8001u);
    EXPECT_EQ(windower.getConfig().m_uiWindowSizeMs, 16u);
    EXPECT_EQ(windower.getConfig().m_uiWindowOverlapMs, 16u);
    EXPECT_TRUE(windower.getConfig().m_bSuppressDCOffset);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(LinearAudioWindower, ComparesOverlapAndWindowInSamples) {
    LinearAudioWindower windower;
    EXPECT_FALSE(windower.configure(config(100, 19, 10))) << "1 sample both, though 19 ms are more than 10 ms";
    EXPECT_TRUE(windower.configure(config(100, 20, 10))) << "2 samples and 1";
    EXPECT_FALSE(windower.configure(config(8000, 16, 17)));
    EXPECT_TRUE(windower.configure(config(100, 0, 9))) << "1 sample, the least, and none";
}

TEST(LinearAudioWindower, StandsStillAfterAnOverlapAsLongAsTheWindow) {
    LinearAudioWindower windower = configured(config(8000, 16, 6));
    EXPECT_FALSE(windower.configure(config(1000, 4, 4)));
    push(windower, ramp(5));
    DoubleVector window;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(windower.popWindow(window));
        EXPECT_THAT(window, ElementsAre(0.0, 1.0, 2.0, 3.0));
    }
    EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), 0.004 + 2 * 0.010)
        << "the first window counts its new length, later ones the shift of the last accepted configuration";
}

TEST(LinearAudioWindower, PopsNothingAfterAnOverlapLongerThanTheWindow) {
    LinearAudioWindower windower = configured(Config());
    push(windower, ramp(300));
    EXPECT_FALSE(windower.configure(config(8000, 16, 32)));
    DoubleVector window{1.0};
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_THAT(window, IsEmpty());
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);

    EXPECT_TRUE(windower.configure(Config()));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128))) << "nothing was consumed meanwhile";
}

TEST(LinearAudioWindower, LetsWindowsOverlap) {
    LinearAudioWindower windower = configured(config(8000, 16, 6));
    push(windower, ramp(300));
    DoubleVector window;
    const double times[] = {0.016, 0.026, 0.036};
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(windower.popWindow(window));
        EXPECT_THAT(window, ElementsAreArray(ramp(128, 80.0 * i)));
        EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), times[i]);
    }
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_THAT(window, IsEmpty());

    push(windower, ramp(67, 300.0));
    EXPECT_FALSE(windower.popWindow(window)) << "60 samples were pending, 127 are";
    push(windower, {367.0});
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 240.0)));
}

TEST(LinearAudioWindower, TruncatesSamplesButNotTime) {
    LinearAudioWindower windower = configured(config(11025, 16, 0));
    push(windower, ramp(352));
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(176)));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.016);
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(176, 176.0)));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.032);
}

TEST(LinearAudioWindower, TruncatesWindowAndOverlapSeparately) {
    // 165.375 and 55.125 samples: a hop of 110, not of 110.25 rounded from 10 ms.
    LinearAudioWindower windower = configured(config(11025, 15, 5));
    push(windower, ramp(1000));
    DoubleVector window;
    for (int i = 0; i < 7; ++i) {
        ASSERT_TRUE(windower.popWindow(window));
        EXPECT_THAT(window, ElementsAreArray(ramp(165, 110.0 * i)));
    }
}

TEST(LinearAudioWindower, ReconfiguringKeepsSamplesAndTimes) {
    LinearAudioWindower windower = configured(config(8000, 16, 0));
    push(windower, ramp(200));
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    ASSERT_TRUE(windower.configure(config(1000, 4, 1)));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.016);
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0.2) << "200 samples at the new rate";
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(128.0, 129.0, 130.0, 131.0));
    EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), 0.016 + 0.003) << "not the first window any more";
}

TEST(LinearAudioWindower, TotalsWhatWasPushedWhateverWasPopped) {
    LinearAudioWindower windower = configured(Config());
    push(windower, ramp(8000));
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 1.0);
    DoubleVector window;
    while (windower.popWindow(window)) {}
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 1.0);
    EXPECT_TRUE(windower.reset());
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0.0);
}

TEST(LinearAudioWindower, TotalsInFloatingPoint) {
    LinearAudioWindower windower = configured(config(0, 16, 0));
    EXPECT_TRUE(std::isnan(windower.getTotalPushedAudioTime()));
    push(windower, {0.0});
    EXPECT_EQ(windower.getTotalPushedAudioTime(), std::numeric_limits<double>::infinity());
    // A rate above 2^63 must not turn negative.
    ASSERT_TRUE(windower.configure(config(std::uint64_t{1} << 63, 0, 0)));
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0x1p-63);
}

TEST(LinearAudioWindower, TakesAnEmptyPush) {
    LinearAudioWindower windower = configured(Config());
    EXPECT_TRUE(windower.pushLinearAudio(nullptr, nullptr));
    const double sample = 1.0;
    EXPECT_TRUE(windower.pushLinearAudio(&sample, &sample));
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0.0);
    DoubleVector window;
    EXPECT_FALSE(windower.popWindow(window));
}

TEST(LinearAudioWindower, ResetForgetsSamplesAndTimesButNotTheConfiguration) {
    LinearAudioWindower windower = configured(config(8000, 16, 6));
    push(windower, ramp(300));
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_TRUE(windower.reset());
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);
    EXPECT_FALSE(windower.popWindow(window));

    push(windower, ramp(208, 5.0));
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 5.0)));
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.016);
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 85.0)));
}

TEST(LinearAudioWindower, SettingTheTimeLeavesTheRestAlone) {
    LinearAudioWindower windower = configured(config(8000, 16, 6));
    push(windower, ramp(208));
    EXPECT_TRUE(windower.setCurrentAudioTime(1.0));
    EXPECT_EQ(windower.getCurrentAudioTime(), 1.0);
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 208.0 / 8000.0);
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128)));
    EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), 1.016) << "still the first window";
    EXPECT_TRUE(windower.setCurrentAudioTime(-2.0));
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), -1.99);
}

TEST(LinearAudioWindower, ReusesTheStorageOfTheCallersWindow) {
    LinearAudioWindower windower = configured(Config());
    push(windower, ramp(256));
    DoubleVector window;
    window.reserve(500);
    const double* const storage = window.data();
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_EQ(window.capacity(), 500u);
    EXPECT_EQ(window.data(), storage);
}

TEST(LinearAudioWindower, PassesSamplesOnAsTheyAre) {
    const double infinity = std::numeric_limits<double>::infinity();
    LinearAudioWindower windower = configured(config(1000, 4, 0));
    push(windower, {std::nan(""), infinity, -infinity, 1e300});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    ASSERT_EQ(window.size(), 4u);
    EXPECT_TRUE(std::isnan(window[0]));
    EXPECT_EQ(window[1], infinity);
    EXPECT_EQ(window[2], -infinity);
    EXPECT_EQ(window[3], 1e300);
}

TEST(LinearAudioWindower, AnswersThroughItsInterfaces) {
    LinearAudioWindower windower = configured(config(1000, 4, 0));
    const std::vector<double> samples = ramp(4);
    Zantrix::Audio::AudioSink& sink = windower;
    EXPECT_TRUE(sink.pushAudio(samples.data(), samples.data() + samples.size()));
    DoubleVector window;
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(samples));

    const Zantrix::Audio::TimeSource& time = windower;
    EXPECT_EQ(time.getCurrentAudioTime(), 0.004);
    EXPECT_EQ(time.getCurrentTime(), 0.004);

    Zantrix::Resettable& resettable = windower;
    EXPECT_TRUE(resettable.reset());
    EXPECT_EQ(time.getCurrentTime(), 0.0);
}

TEST(LinearAudioWindower, ForwardsTheGenericPushThroughTheVirtualTable) {
    struct Counting : LinearAudioWindower {
        bool pushLinearAudio(const double* begin, const double* end) override {
            first = begin;
            last = end;
            return false;
        }
        const double* first = nullptr;
        const double* last = nullptr;
    };
    Counting windower;
    const double samples[2] = {};
    Zantrix::Audio::AudioSink& sink = windower;
    EXPECT_FALSE(sink.pushAudio(samples, samples + 2));
    EXPECT_EQ(windower.first, samples);
    EXPECT_EQ(windower.last, samples + 2);
}

}  // namespace
