// The bundled sample call, measured by means that share nothing with the program that makes it: the bytes of the file
// are read here, frequencies come from a plain discrete Fourier transform, and the tones that a phase must hold are
// tabled again below. Tolerances are those of the tone plans or of a 5 ms edge, named where they stand.

#include "testkit/WavFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <numbers>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double c_dRate = 8000.0;

struct Phase {
    std::string name;
    double start;
    double stop;
};

using Tones = std::vector<double>;

const std::map<std::string, Tones>& tonesByName() {
    static const std::map<std::string, Tones> tones = {
        {"dial tone", {350, 440}}, {"ringback", {440, 480}}, {"busy", {480, 620}},    {"dtmf 1", {697, 1209}},
        {"dtmf 2", {697, 1336}},   {"dtmf 3", {697, 1477}},  {"dtmf 4", {770, 1209}}, {"dtmf 5", {770, 1336}},
        {"dtmf 6", {770, 1477}},   {"dtmf 7", {852, 1209}},  {"dtmf 8", {852, 1336}}, {"dtmf 9", {852, 1477}},
        {"dtmf *", {941, 1209}},   {"dtmf 0", {941, 1336}},  {"dtmf #", {941, 1477}},
    };
    return tones;
}

std::uint32_t littleEndian(const std::string& bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(at + i))) << (8 * i);
    }
    return value;
}

std::uint64_t fnv1a(const std::string& bytes) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return hash;
}

class SampleCall : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_strWav = testkit::readBytes(MURVANE_SAMPLE_CALL_FOLDER "/sample-call.wav");
        s_strCsv = testkit::readBytes(MURVANE_SAMPLE_CALL_FOLDER "/sample-call.csv");
        for (std::size_t at = 44; at + 1 < s_strWav.size(); at += 2) {
            s_vSamples.push_back(static_cast<std::int16_t>(littleEndian(s_strWav, at, 2)) / 32768.0);
        }
        std::istringstream lines(s_strCsv);
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line)) {
            const std::size_t first = line.find(',');
            const std::size_t second = line.find(',', first + 1);
            s_vPhases.push_back({line.substr(0, first), std::strtod(line.c_str() + first + 1, nullptr),
                                 std::strtod(line.c_str() + second + 1, nullptr)});
        }
    }

    static std::size_t indexOf(double seconds) { return static_cast<std::size_t>(std::lround(seconds * c_dRate)); }

    // The samples of a phase, `margin` seconds left out at both ends.
    static std::vector<double> cut(const Phase& phase, double margin = 0.0) {
        return {s_vSamples.begin() + static_cast<std::ptrdiff_t>(indexOf(phase.start + margin)),
                s_vSamples.begin() + static_cast<std::ptrdiff_t>(indexOf(phase.stop - margin))};
    }

    // The amplitude of the sine of a frequency, through a Hann weighting that keeps other tones out.
    static double amplitude(const std::vector<double>& samples, double frequencyHz) {
        double re = 0.0;
        double im = 0.0;
        double weights = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double turn = 2.0 * std::numbers::pi * static_cast<double>(i);
            const double weight = 0.5 - 0.5 * std::cos(turn / static_cast<double>(samples.size()));
            re += weight * samples[i] * std::cos(turn * frequencyHz / c_dRate);
            im += weight * samples[i] * std::sin(turn * frequencyHz / c_dRate);
            weights += weight;
        }
        return 2.0 * std::hypot(re, im) / weights;
    }

    static double meanSquare(const std::vector<double>& samples) {
        double sum = 0.0;
        for (const double sample : samples) {
            sum += sample * sample;
        }
        return sum / static_cast<double>(samples.size());
    }

    static double largest(const std::vector<double>& samples) {
        double value = 0.0;
        for (const double sample : samples) {
            value = std::max(value, std::fabs(sample));
        }
        return value;
    }

    static double crossingRate(const std::vector<double>& samples, std::size_t first, std::size_t count) {
        std::size_t crossings = 0;
        for (std::size_t i = first + 1; i < first + count; ++i) {
            crossings += (samples[i] < 0.0) != (samples[i - 1] < 0.0) ? 1 : 0;
        }
        return static_cast<double>(crossings) / static_cast<double>(count);
    }

    static std::vector<Phase> phasesNamed(const std::string& name) {
        std::vector<Phase> found;
        std::copy_if(s_vPhases.begin(), s_vPhases.end(), std::back_inserter(found),
                     [&](const Phase& phase) { return phase.name == name; });
        return found;
    }

    static inline std::string s_strWav;
    static inline std::string s_strCsv;
    static inline std::vector<double> s_vSamples;
    static inline std::vector<Phase> s_vPhases;
};

TEST_F(SampleCall, IsAMonoWavOf8000HzAnd16Bits) {
    ASSERT_GT(s_strWav.size(), 44U);
    EXPECT_EQ(s_strWav.substr(0, 4), "RIFF");
    EXPECT_EQ(littleEndian(s_strWav, 4, 4), s_strWav.size() - 8);
    EXPECT_EQ(s_strWav.substr(8, 8), "WAVEfmt ");
    EXPECT_EQ(littleEndian(s_strWav, 16, 4), 16U);
    EXPECT_EQ(littleEndian(s_strWav, 20, 2), 1U) << "PCM";
    EXPECT_EQ(littleEndian(s_strWav, 22, 2), 1U) << "channels";
    EXPECT_EQ(littleEndian(s_strWav, 24, 4), 8000U) << "sampling rate";
    EXPECT_EQ(littleEndian(s_strWav, 34, 2), 16U) << "bits";
    EXPECT_EQ(s_strWav.substr(36, 4), "data");
    EXPECT_EQ(littleEndian(s_strWav, 40, 4), s_strWav.size() - 44);
}

TEST_F(SampleCall, ItsPhasesFollowWithoutGapFromTheFirstSampleToTheLast) {
    EXPECT_EQ(s_strCsv.substr(0, s_strCsv.find('\n')), "phase,start,stop");
    EXPECT_EQ(s_strCsv.back(), '\n');
    EXPECT_EQ(s_strCsv.find('\r'), std::string::npos);
    ASSERT_FALSE(s_vPhases.empty());
    EXPECT_EQ(s_vPhases.front().start, 0.0);
    for (std::size_t i = 0; i < s_vPhases.size(); ++i) {
        const Phase& phase = s_vPhases[i];
        EXPECT_GT(phase.stop, phase.start);
        EXPECT_TRUE(phase.name == "silence" || phase.name == "speech" || tonesByName().contains(phase.name))
            << phase.name;
        if (i > 0) {
            EXPECT_EQ(phase.start, s_vPhases[i - 1].stop);
            EXPECT_NE(phase.name == "silence", s_vPhases[i - 1].name == "silence") << "at " << phase.start;
        }
    }
    EXPECT_EQ(indexOf(s_vPhases.back().stop), s_vSamples.size());
    EXPECT_GE(s_vPhases.back().stop, 30.0);
    EXPECT_LE(s_vPhases.back().stop, 40.0);
}

TEST_F(SampleCall, GoesThroughACallInOrder) {
    std::vector<std::string> order;
    for (const Phase& phase : s_vPhases) {
        const std::string step = phase.name.starts_with("dtmf") ? "dtmf" : phase.name;
        if (step != "silence" && (order.empty() || order.back() != step)) {
            order.push_back(step);
        }
    }
    EXPECT_EQ(order, (std::vector<std::string>{"dial tone", "dtmf", "ringback", "speech", "busy"}));
}

TEST_F(SampleCall, EveryTonePhaseHoldsItsTwoFrequenciesAndNoOther) {
    std::set<double> allTones;
    for (const auto& [name, tones] : tonesByName()) {
        allTones.insert(tones.begin(), tones.end());
    }
    std::size_t checked = 0;
    for (const Phase& phase : s_vPhases) {
        const auto expected = tonesByName().find(phase.name);
        if (expected == tonesByName().end()) {
            continue;
        }
        SCOPED_TRACE(phase.name + " at " + std::to_string(phase.start));
        const std::vector<double> samples = cut(phase, 0.005);
        const double low = amplitude(samples, expected->second[0]);
        const double high = amplitude(samples, expected->second[1]);
        // All but 2 % of the power; the shortest phase is not a whole number of beats.
        EXPECT_NEAR((low * low + high * high) / 2.0, meanSquare(samples), 0.02 * meanSquare(samples));
        // Receivers accept up to 4 dB more on the row and 8 dB more on the column.
        EXPECT_GT(low, 0.4 * high);
        EXPECT_GT(high, 0.6 * low);
        for (const double other : allTones) {
            if (other != expected->second[0] && other != expected->second[1]) {
                EXPECT_LT(amplitude(samples, other), 0.1 * std::min(low, high)) << other << " Hz";
            }
        }
        ++checked;
    }
    EXPECT_GE(checked, 1U + 7U + 2U + 4U);
}

TEST_F(SampleCall, ToneLevelsAreThoseOfThePrecisePlan) {
    // dBm0 of each frequency; a full-scale sine has +3.17.
    const std::map<std::string, double> levels = {{"dial tone", -13.0}, {"ringback", -19.0}, {"busy", -24.0}};
    for (const auto& [name, level] : levels) {
        for (const Phase& phase : phasesNamed(name)) {
            for (const double frequency : tonesByName().at(name)) {
                EXPECT_NEAR(20.0 * std::log10(amplitude(cut(phase, 0.005), frequency)) + 3.17, level, 0.1) << name;
            }
        }
    }
}

TEST_F(SampleCall, CadencesAreThoseOfNorthAmerica) {
    EXPECT_GE(phasesNamed("dial tone").front().stop - phasesNamed("dial tone").front().start, 3.0);
    std::map<std::string, int> counts;
    for (std::size_t i = 0; i + 1 < s_vPhases.size(); ++i) {
        const Phase& phase = s_vPhases[i];
        const double on = phase.stop - phase.start;
        const double off = s_vPhases[i + 1].stop - s_vPhases[i + 1].start;
        const bool isLast = i + 2 == s_vPhases.size() || s_vPhases[i + 2].name.substr(0, 4) != phase.name.substr(0, 4);
        ++counts[phase.name.substr(0, 4)];
        if (phase.name == "ringback") {
            EXPECT_NEAR(on, 2.0, 1e-9);
            EXPECT_NEAR(off, 4.0, 1e-9);
        } else if (phase.name == "busy") {
            EXPECT_NEAR(on, 0.5, 1e-9);
            EXPECT_TRUE(isLast || std::fabs(off - 0.5) < 1e-9);
        } else if (phase.name.starts_with("dtmf")) {
            EXPECT_GE(on, 0.07);
            EXPECT_LE(on, 0.1);
            EXPECT_TRUE(isLast || (off >= 0.07 && off <= 0.1));
        }
    }
    EXPECT_GE(counts["ring"], 2);
    EXPECT_GE(counts["busy"], 4);
    EXPECT_TRUE(counts["dtmf"] == 7 || counts["dtmf"] == 10);
}

TEST_F(SampleCall, SoundsStartAndStopWithinTenMillisecondsOfTheirTimes) {
    constexpr double c_dHeard = 0.003;  // well above the line noise, well below any tone
    const std::size_t tolerance = indexOf(0.010);
    for (const Phase& phase : s_vPhases) {
        if (phase.name == "speech") {
            continue;  // a phrase may begin with a closure and dies away
        }
        const std::vector<double> samples = cut(phase);
        if (phase.name == "silence") {
            EXPECT_LT(largest(samples), c_dHeard) << "at " << phase.start;
            continue;
        }
        const auto isHeard = [](double sample) { return std::fabs(sample) > c_dHeard; };
        const auto first = std::find_if(samples.begin(), samples.end(), isHeard) - samples.begin();
        const auto last = std::find_if(samples.rbegin(), samples.rend(), isHeard) - samples.rbegin();
        EXPECT_LE(static_cast<std::size_t>(first), tolerance) << phase.name << " at " << phase.start;
        EXPECT_LE(static_cast<std::size_t>(last), tolerance) << phase.name << " at " << phase.start;
        // No hole in between: two tones beat, the slowest pair (440 and 480 Hz) every 25 ms.
        for (std::size_t i = tolerance; i + tolerance + 200 <= samples.size(); i += 40) {
            const double loudest = largest({samples.begin() + static_cast<std::ptrdiff_t>(i),
                                            samples.begin() + static_cast<std::ptrdiff_t>(i) + 200});
            ASSERT_GT(loudest, 0.8 * largest(samples)) << phase.name << " at " << phase.start;
        }
    }
}

TEST_F(SampleCall, SilenceIsQuietButNotDigitalZero) {
    for (const Phase& phase : phasesNamed("silence")) {
        const double level = 10.0 * std::log10(2.0 * meanSquare(cut(phase))) + 3.17;
        EXPECT_LT(level, -60.0) << "dBm0, at " << phase.start;
        EXPECT_GT(level, -75.0) << "dBm0, at " << phase.start;
    }
}

TEST_F(SampleCall, NothingClipsAndNothingClicks) {
    EXPECT_LT(largest(s_vSamples), 0.7);
    for (std::size_t i = 1; i < s_vPhases.size(); ++i) {
        const std::size_t edge = indexOf(s_vPhases[i].start);
        EXPECT_LT(std::fabs(s_vSamples[edge] - s_vSamples[edge - 1]), 0.003) << "at " << s_vPhases[i].start;
    }
}

TEST_F(SampleCall, SpeechMeasuresLikeSpeech) {
    constexpr std::size_t c_uiWindow = 256;
    std::size_t windows = 0;
    std::size_t voiced = 0;
    std::size_t hissing = 0;
    double seconds = 0.0;
    for (const Phase& phase : phasesNamed("speech")) {
        const std::vector<double> samples = cut(phase);
        seconds += phase.stop - phase.start;
        for (std::size_t i = 0; i + c_uiWindow <= samples.size(); i += c_uiWindow / 2) {
            const double rate = crossingRate(samples, i, c_uiWindow);
            ++windows;
            voiced += rate < 0.3 ? 1 : 0;
            hissing += rate > 0.5 ? 1 : 0;
        }
        const double level = 10.0 * std::log10(meanSquare(samples));
        EXPECT_GT(level, -30.0) << "dB below full scale, at " << phase.start;
        EXPECT_LT(level, -18.0) << "dB below full scale, at " << phase.start;
        // No tone that a tone detector could take it for.
        for (const auto& [name, tones] : tonesByName()) {
            const double low = amplitude(samples, tones[0]);
            const double high = amplitude(samples, tones[1]);
            EXPECT_LT((low * low + high * high) / 2.0, 0.1 * meanSquare(samples)) << name << " at " << phase.start;
        }
    }
    EXPECT_GE(seconds, 4.0);
    EXPECT_GT(voiced, windows / 2);
    EXPECT_GT(hissing, windows / 20);
    EXPECT_LT(hissing, windows / 3);
}

TEST_F(SampleCall, SpeechHasTheRhythmOfSyllables) {
    for (const Phase& phase : phasesNamed("speech")) {
        const std::vector<double> samples = cut(phase);
        std::vector<double> loudness;  // of 20 ms, every 10 ms
        for (std::size_t i = 0; i + 160 <= samples.size(); i += 80) {
            const auto from = samples.begin() + static_cast<std::ptrdiff_t>(i);
            loudness.push_back(std::sqrt(meanSquare({from, from + 160})));
        }
        double mean = 0.0;
        for (const double value : loudness) {
            mean += value / static_cast<double>(loudness.size());
        }
        double strongest = 0.0;
        double rhythm = 0.0;
        for (double frequency = 1.0; frequency <= 16.0; frequency += 0.25) {
            double re = 0.0;
            double im = 0.0;
            for (std::size_t i = 0; i < loudness.size(); ++i) {
                const double angle = 2.0 * std::numbers::pi * frequency * 0.01 * static_cast<double>(i);
                re += (loudness[i] - mean) * std::cos(angle);
                im += (loudness[i] - mean) * std::sin(angle);
            }
            if (std::hypot(re, im) > strongest) {
                strongest = std::hypot(re, im);
                rhythm = frequency;
            }
        }
        EXPECT_GE(rhythm, 3.0) << "Hz, at " << phase.start;
        EXPECT_LE(rhythm, 5.5) << "Hz, at " << phase.start;
    }
}

TEST_F(SampleCall, IsTheSameBytesWheneverItIsMade) {
    const testkit::TemporaryFolder folder;
    const std::string command =
        std::string(MURVANE_SAMPLE_CALL_PROGRAM) + " '" + folder / "again.wav" + "' '" + folder / "again.csv" + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(testkit::readBytes(folder / "again.wav") == s_strWav);
    EXPECT_EQ(testkit::readBytes(folder / "again.csv"), s_strCsv);
}

// Origin: the program itself, when its sound was last agreed on. Tolerance: none. A change of the call moves these two,
// and is then meant to; a machine or a compiler that moves them is a defect.
TEST_F(SampleCall, IsTheSameBytesOnEveryMachine) {
    EXPECT_EQ(fnv1a(s_strWav), 4402177471838199543U);
    EXPECT_EQ(fnv1a(s_strCsv), 16912697645674924952U);
}

TEST_F(SampleCall, ItsProgramRefusesWrongUsageAndUnwritableFiles) {
    const std::string program = MURVANE_SAMPLE_CALL_PROGRAM;
    const testkit::TemporaryFolder folder;
    const auto exitCodeOf = [](const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); };
    EXPECT_EQ(exitCodeOf(program + " 2>'" + folder / "usage" + "'"), 2);
    EXPECT_EQ(testkit::readBytes(folder / "usage"), "usage: make_sample_call OUTPUT.wav PHASES.csv\n");
    const std::string nowhere = folder / "missing/call";
    EXPECT_EQ(exitCodeOf(program + " '" + nowhere + ".wav' '" + folder / "p.csv" + "' 2>'" + folder / "wav" + "'"), 1);
    EXPECT_TRUE(testkit::readBytes(folder / "wav").starts_with("cannot write " + nowhere + ".wav"));
    EXPECT_EQ(exitCodeOf(program + " '" + folder / "c.wav" + "' '" + nowhere + ".csv' 2>'" + folder / "csv" + "'"), 1);
    EXPECT_EQ(testkit::readBytes(folder / "csv"), "cannot write " + nowhere + ".csv\n");
}

}  // namespace
