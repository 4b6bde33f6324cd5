#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/audio/input/AudioWindowedFileReader.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

using testkit::noise;
using testkit::TemporaryFolder;
using Zantrix::Audio::AudioFileReader;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Config = LinearAudioWindower::Config;
using Window = std::vector<double>;

constexpr std::uint64_t c_uiCases = 60;

struct Numbers {
    explicit Numbers(std::uint64_t seed) : engine(seed) {}

    std::uint64_t upTo(std::uint64_t last) { return engine() % (last + 1); }

    std::mt19937_64 engine;
};

/// An accepted configuration: windows of 1 to 330 samples.
Config anyConfig(Numbers& numbers) {
    Config config;
    const std::uint64_t rates[] = {1000, 8000, 11025};
    config.m_uiSampleRate = rates[numbers.upTo(2)];
    config.m_uiWindowSizeMs = 1 + numbers.upTo(29);
    config.m_uiWindowOverlapMs = numbers.upTo(config.m_uiWindowSizeMs - 1);
    return config;
}

std::size_t samplesOf(const Config& config, std::uint64_t milliseconds) {
    return config.m_uiSampleRate * milliseconds / 1000;
}

/// What the windows of some samples must be, cut with no queue at all.
std::vector<Window> cut(const std::vector<double>& samples, const Config& config) {
    const std::size_t size = std::max<std::size_t>(1, samplesOf(config, config.m_uiWindowSizeMs));
    const std::size_t hop = size - samplesOf(config, config.m_uiWindowOverlapMs);
    std::vector<Window> windows;
    for (std::size_t first = 0; first + size <= samples.size(); first += hop) {
        const double* const begin = samples.data() + first;
        Window window(begin, begin + size);
        windows.push_back(std::move(window));
    }
    return windows;
}

/// The same less the running mean of the windows' means.
std::vector<Window> withoutOffset(std::vector<Window> windows) {
    double sum = 0.0;
    double count = 0.0;
    for (Window& window : windows) {
        double windowSum = 0.0;
        for (const double sample : window) {
            windowSum += sample;
        }
        sum += windowSum / static_cast<double>(window.size());
        count += 1.0;
        for (double& sample : window) {
            sample -= sum / count;
        }
    }
    return windows;
}

/// Names the case when one of its checks fails.
class Case {
public:
    Case(std::uint64_t seed, const Config& config)
        : m_trace(__FILE__, __LINE__,
                  testing::Message() << "seed " << seed << ", " << config.m_uiSampleRate << " Hz, "
                                     << config.m_uiWindowSizeMs << " ms less " << config.m_uiWindowOverlapMs << " ms") {
    }

private:
    testing::ScopedTrace m_trace;
};

TEST(WindowingProperty, AnyChunkingGivesTheSameWindows) {
    for (std::uint64_t seed = 0; seed < c_uiCases; ++seed) {
        Numbers numbers(seed);
        Config config = anyConfig(numbers);
        config.m_bSuppressDCOffset = numbers.upTo(1) == 1;
        const Case named(seed, config);
        const std::vector<double> samples = noise(numbers.upTo(3000), seed);
        std::vector<Window> expected = cut(samples, config);
        if (config.m_bSuppressDCOffset) {
            expected = withoutOffset(std::move(expected));
        }

        for (const std::uint64_t longest : {1u, 50u, 5000u}) {
            LinearAudioWindower windower;
            ASSERT_TRUE(windower.configure(config));
            std::vector<Window> windows;
            DoubleVector window;
            const double* next = samples.data();
            const double* const end = next + samples.size();
            while (next != end) {
                const auto chunk =
                    std::min<std::ptrdiff_t>(end - next, static_cast<std::ptrdiff_t>(1 + numbers.upTo(longest)));
                ASSERT_TRUE(windower.pushLinearAudio(next, next + chunk));
                next += chunk;
                // Sometimes nobody asks for windows until more has been pushed.
                while (numbers.upTo(3) != 0 && windower.popWindow(window)) {
                    windows.push_back(window);
                }
            }
            while (windower.popWindow(window)) {
                windows.push_back(window);
            }
            ASSERT_EQ(windows, expected);
            ASSERT_EQ(windower.getTotalPushedAudioTime(),
                      static_cast<double>(samples.size()) / static_cast<double>(config.m_uiSampleRate));
        }
    }
}

TEST(WindowingProperty, TimeIsTheEndOfTheWindow) {
    for (std::uint64_t seed = 0; seed < c_uiCases; ++seed) {
        Numbers numbers(seed);
        const Config config = anyConfig(numbers);
        const Case named(seed, config);
        LinearAudioWindower windower;
        ASSERT_TRUE(windower.configure(config));
        const std::vector<double> samples = noise(3000, seed);
        ASSERT_TRUE(windower.pushLinearAudio(samples.data(), samples.data() + samples.size()));
        const double start = static_cast<double>(numbers.upTo(10));
        ASSERT_TRUE(windower.setCurrentAudioTime(start));
        DoubleVector window;
        for (std::uint64_t i = 0; windower.popWindow(window); ++i) {
            const std::uint64_t endMs =
                config.m_uiWindowSizeMs + i * (config.m_uiWindowSizeMs - config.m_uiWindowOverlapMs);
            ASSERT_NEAR(windower.getCurrentAudioTime(), start + static_cast<double>(endMs) / 1000.0, 1e-9);
        }
    }
}

TEST(WindowingProperty, ResetMakesAWindowerLikeNew) {
    for (std::uint64_t seed = 0; seed < c_uiCases; ++seed) {
        Numbers numbers(seed);
        Config config = anyConfig(numbers);
        config.m_bSuppressDCOffset = true;
        const Case named(seed, config);
        LinearAudioWindower windower;
        ASSERT_TRUE(windower.configure(config));
        const std::vector<double> before = noise(numbers.upTo(2000), seed + 1000);
        ASSERT_TRUE(windower.pushLinearAudio(before.data(), before.data() + before.size()));
        DoubleVector window;
        while (numbers.upTo(5) != 0 && windower.popWindow(window)) {}
        ASSERT_TRUE(windower.reset());

        const std::vector<double> samples = noise(1500, seed);
        ASSERT_TRUE(windower.pushLinearAudio(samples.data(), samples.data() + samples.size()));
        std::vector<Window> windows;
        while (windower.popWindow(window)) {
            windows.push_back(window);
        }
        ASSERT_EQ(windows, withoutOffset(cut(samples, config)));
    }
}

TEST(WindowingProperty, ChunksOfAFileDoNotChangeItsSamples) {
    const TemporaryFolder folder;
    const std::string path = folder / "audio.wav";
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        Numbers numbers(seed);
        testkit::writeAudio(path, noise(numbers.upTo(5000), seed));
        AudioFileReader reader;
        ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
        DoubleVector whole;
        reader.getAllLinearFrames(whole);
        for (const std::size_t chunk : {1 + numbers.upTo(10), 1 + numbers.upTo(2000), std::uint64_t{10000}}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", chunks of " << chunk);
            ASSERT_TRUE(reader.setNbOfFramesToRead(chunk));
            ASSERT_TRUE(reader.gotoStart());
            DoubleVector all;
            DoubleVector part;
            while (reader.getNextLinearFrames(part)) {
                ASSERT_EQ(part.size() < chunk, reader.atEnd());
                all.append(part);
                ASSERT_NEAR(reader.getCurrentAudioTime(), static_cast<double>(all.size()) / 8000.0, 1e-9);
            }
            ASSERT_EQ(all, whole);
        }
    }
}

TEST(WindowingProperty, ChunksOfAFileDoNotChangeItsWindows) {
    const TemporaryFolder folder;
    const std::string path = folder / "audio.wav";
    for (std::uint64_t seed = 0; seed < c_uiCases; ++seed) {
        Numbers numbers(seed);
        Config config = anyConfig(numbers);
        config.m_bSuppressDCOffset = numbers.upTo(1) == 1;
        const Case named(seed, config);
        // Floating point of 64 bits: the file holds the very samples.
        const std::vector<double> samples = noise(numbers.upTo(3000), seed);
        testkit::writeAudio(path, samples, 8000, 1, 0x010007);
        std::vector<Window> expected = cut(samples, config);
        if (config.m_bSuppressDCOffset) {
            expected = withoutOffset(std::move(expected));
        }
        for (const std::size_t factor : {std::uint64_t{1}, 2 + numbers.upTo(5), std::uint64_t{1000}}) {
            WindowedAudioFileReader reader;
            ASSERT_TRUE(reader.configure(config));
            ASSERT_TRUE(reader.setChunkReadFactor(factor));
            ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
            std::vector<Window> windows;
            DoubleVector window;
            while (reader.getNextWindow(window)) {
                windows.push_back(window);
            }
            ASSERT_EQ(windows, expected) << "factor " << factor;
        }
    }
}

TEST(WindowingProperty, SeekingGivesTheWindowsOfTheRestOfTheFile) {
    const TemporaryFolder folder;
    const std::string path = folder / "audio.wav";
    for (std::uint64_t seed = 0; seed < c_uiCases; ++seed) {
        Numbers numbers(seed);
        const Config config = anyConfig(numbers);
        const Case named(seed, config);
        const std::vector<double> samples = noise(1 + numbers.upTo(3000), seed);
        testkit::writeAudio(path, samples, 8000, 1, 0x010007);
        WindowedAudioFileReader reader;
        ASSERT_TRUE(reader.configure(config));
        ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
        DoubleVector window;
        while (numbers.upTo(5) != 0 && reader.getNextWindow(window)) {}
        const std::size_t frame = numbers.upTo(samples.size());
        const double time = static_cast<double>(frame) / 8000.0;
        ASSERT_TRUE(reader.gotoAudioTime(time));
        const std::vector<double> rest(samples.begin() + static_cast<std::ptrdiff_t>(frame), samples.end());
        for (const Window& expected : cut(rest, config)) {
            ASSERT_TRUE(reader.getNextWindow(window));
            ASSERT_EQ(window, expected);
        }
        ASSERT_FALSE(reader.getNextWindow(window));
    }
}

}  // namespace
