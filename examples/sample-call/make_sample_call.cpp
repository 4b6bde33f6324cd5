/// Makes the bundled sample call: a WAV file of a telephone call as a North American caller hears it, and the list of
/// its phases. One table below is the source of both, so every second of the recording is known; the bytes are the same
/// on every machine.
///
///     make_sample_call OUTPUT.wav PHASES.csv
///
/// The recording is mono, 8000 Hz, 16 bits. The list has the columns phase, start and stop (seconds), one row after the
/// other without a gap. Exit status: 0 done, 1 a file could not be written, 2 wrong usage.

#include "Arithmetic.h"
#include "Speech.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

namespace SampleCall {

namespace {

// The peak of a sine of a whole number of dBm0. A full-scale sine of a G.711 mu-law line has +3.17 dBm0 (ITU-T G.711).
constexpr double amplitudeOf(int dBm0) {
    constexpr double decibel = 1.1220184543019633;  // 10^(1/20)
    double amplitude = 0.6942219;                   // 10^(-3.17/20)
    for (; dBm0 < 0; ++dBm0) {
        amplitude /= decibel;
    }
    return amplitude;
}

enum class Sound { Silence, Tones, Speech };

struct Phase {
    std::string_view name;
    Sound sound;
    int milliseconds;
    // Tones:
    int lowHz = 0;
    int highHz = 0;
    double lowAmplitude = 0.0;
    double highAmplitude = 0.0;
    // Speech:
    std::span<const Syllable> syllables = {};
};

constexpr Phase silence(int milliseconds) {
    return {"silence", Sound::Silence, milliseconds};
}

constexpr Phase tones(std::string_view name, int milliseconds, int lowHz, int highHz, int dBm0) {
    return {name, Sound::Tones, milliseconds, lowHz, highHz, amplitudeOf(dBm0), amplitudeOf(dBm0)};
}

// The precise tone plan of North America: the frequencies, the levels per frequency and the cadences of Telcordia
// GR-506-CORE (LSSGR: Signaling for Analog Interfaces), also in the list of national tones to ITU-T E.180.
constexpr Phase dialTone(int milliseconds) {
    return tones("dial tone", milliseconds, 350, 440, -13);
}

constexpr Phase ringback() {
    return tones("ringback", 2000, 440, 480, -19);
}
constexpr Phase ringbackPause() {
    return silence(4000);
}

constexpr Phase busy() {
    return tones("busy", 500, 480, 620, -24);
}
constexpr Phase busyPause() {
    return silence(500);
}

// The push-button frequencies of ITU-T Q.23. Receivers have to accept 40 ms of signal and of pause (ITU-T Q.24, the
// North American column), diallers send more. The levels, 2 dB more on the column, suit a short line.
constexpr std::array<int, 4> c_rowsHz = {697, 770, 852, 941};
constexpr std::array<int, 3> c_columnsHz = {1209, 1336, 1477};
constexpr std::string_view c_keys = "123456789*0#";
constexpr std::array<std::string_view, 12> c_keyNames = {"dtmf 1", "dtmf 2", "dtmf 3", "dtmf 4", "dtmf 5", "dtmf 6",
                                                         "dtmf 7", "dtmf 8", "dtmf 9", "dtmf *", "dtmf 0", "dtmf #"};

constexpr Phase key(char digit) {
    const std::size_t index = c_keys.find(digit);
    return {c_keyNames[index], Sound::Tones,    90, c_rowsHz[index / 3], c_columnsHz[index % 3],
            amplitudeOf(-10),  amplitudeOf(-8), {}};
}
constexpr Phase keyPause() {
    return silence(80);
}

constexpr std::array<Syllable, 5> c_greeting = {{
    {Onset::Fricative, Vowel::Eh, 270, 0.9},
    {Onset::Nasal, Vowel::Aw, 300, 1.15},
    {Onset::Stop, Vowel::Ee, 230, 0.85},
    {Onset::Nasal, Vowel::Aa, 250, 1.1},
    {Onset::Fricative, Vowel::Uh, 350, 0.8},
}};
constexpr std::array<Syllable, 12> c_question = {{
    {Onset::Stop, Vowel::Aa, 230, 1.0},
    {Onset::Nasal, Vowel::Ee, 210, 0.85},
    {Onset::Fricative, Vowel::Oo, 280, 1.2},
    {Onset::Stop, Vowel::Eh, 220, 0.8},
    {Onset::None, Vowel::Uh, 200, 0.7},
    {Onset::Fricative, Vowel::Ee, 290, 1.15},
    {Onset::Stop, Vowel::Aw, 240, 1.0},
    {Onset::Nasal, Vowel::Eh, 230, 0.8},
    {Onset::Stop, Vowel::Aa, 260, 1.2},
    {Onset::Fricative, Vowel::Uh, 250, 0.75},
    {Onset::Nasal, Vowel::Oo, 220, 0.9},
    {Onset::Stop, Vowel::Ee, 330, 0.9},
}};
constexpr std::array<Syllable, 9> c_goodbye = {{
    {Onset::Nasal, Vowel::Oo, 220, 0.9},
    {Onset::Stop, Vowel::Eh, 240, 1.15},
    {Onset::Fricative, Vowel::Aa, 280, 1.0},
    {Onset::None, Vowel::Ee, 200, 0.75},
    {Onset::Stop, Vowel::Aw, 250, 1.1},
    {Onset::Fricative, Vowel::Eh, 270, 0.85},
    {Onset::Nasal, Vowel::Uh, 210, 0.75},
    {Onset::Stop, Vowel::Oo, 240, 1.05},
    {Onset::Fricative, Vowel::Ee, 360, 0.85},
}};

template <std::size_t COUNT>
constexpr Phase speech(const std::array<Syllable, COUNT>& syllables) {
    int milliseconds = 0;
    for (const Syllable& syllable : syllables) {
        milliseconds += syllable.milliseconds;
    }
    return {"speech", Sound::Speech, milliseconds, 0, 0, 0.0, 0.0, syllables};
}

// The call. Its number is one of those that are kept for fiction: (907) 555-0138.
// clang-format off
constexpr auto c_call = std::to_array<Phase>({
    silence(500), dialTone(3500), silence(300),
    key('9'), keyPause(), key('0'), keyPause(), key('7'), keyPause(),
    key('5'), keyPause(), key('5'), keyPause(), key('5'), keyPause(),
    key('0'), keyPause(), key('1'), keyPause(), key('3'), keyPause(), key('8'), silence(1500),
    ringback(), ringbackPause(), ringback(), ringbackPause(),
    speech(c_greeting), silence(650), speech(c_question), silence(500), speech(c_goodbye), silence(1000),
    busy(), busyPause(), busy(), busyPause(), busy(), busyPause(),
    busy(), busyPause(), busy(), busyPause(), busy(), silence(750),
});
// clang-format on

// No name needs quoting, so the list writes them as they are.
static_assert(std::none_of(c_call.begin(), c_call.end(),
                           [](const Phase& phase) { return phase.name.find_first_of(",\"\r\n") != phase.name.npos; }));

// Raised-cosine edges, short against every cadence: a sound that starts at full level would click.
constexpr int c_iRampSamples = samplesOf(5);
// Triangular noise of about -65 dBm0: a line is never quite silent.
constexpr double c_dLineNoisePeak = 0.0007;
constexpr double c_dSpeechPeak = 0.4;

double ramp(int index, int count) {
    const int fromEdge = std::min(index, count - 1 - index);
    return fromEdge >= c_iRampSamples ? 1.0 : 0.5 - 0.5 * cosineOfTurns(0.5 * fromEdge / c_iRampSamples);
}

// The phase of a whole number of hertz repeats every second, so it can be kept in integers.
double tone(int frequencyHz, int index) {
    const std::int64_t cycles = std::int64_t{frequencyHz} * index % c_iSampleRate;
    return sineOfTurns(static_cast<double>(cycles) / c_iSampleRate);
}

std::vector<double> soundOf(const Phase& phase, unsigned seed) {
    const int count = samplesOf(phase.milliseconds);
    std::vector<double> samples(static_cast<std::size_t>(count), 0.0);
    if (phase.sound == Sound::Speech) {
        samples = speak(phase.syllables, c_dSpeechPeak, seed);
    }
    for (int i = 0; i < count; ++i) {
        double& sample = samples[static_cast<std::size_t>(i)];
        if (phase.sound == Sound::Tones) {
            sample = phase.lowAmplitude * tone(phase.lowHz, i) + phase.highAmplitude * tone(phase.highHz, i);
        }
        sample *= ramp(i, count);
    }
    return samples;
}

// To the nearest, halves away from zero; nothing in the call comes near full scale.
std::int16_t quantised(double sample) {
    const double scaled = sample * 32768.0;
    return static_cast<std::int16_t>(scaled < 0.0 ? scaled - 0.5 : scaled + 0.5);
}

std::vector<std::int16_t> callSamples() {
    std::vector<std::int16_t> call;
    Noise line(20240229);
    unsigned seed = 1;
    for (const Phase& phase : c_call) {
        for (const double sample : soundOf(phase, seed)) {
            call.push_back(quantised(sample + c_dLineNoisePeak * 0.5 * (line.next() + line.next())));
        }
        ++seed;
    }
    return call;
}

bool writeCall(const char* path) {
    const std::vector<std::int16_t> call = callSamples();
    SF_INFO info{};
    info.samplerate = c_iSampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* pFile = sf_open(path, SFM_WRITE, &info);
    if (pFile == nullptr) {
        std::fprintf(stderr, "cannot write %s: %s\n", path, sf_strerror(nullptr));
        return false;
    }
    const auto count = static_cast<sf_count_t>(call.size());
    const bool written = sf_write_short(pFile, call.data(), count) == count;
    if (sf_close(pFile) != 0 || !written) {
        std::fprintf(stderr, "cannot write %s\n", path);
        return false;
    }
    return true;
}

bool writePhases(const char* path) {
    std::ofstream file(path, std::ios::binary);
    file << "phase,start,stop\n";
    int startMs = 0;
    for (const Phase& phase : c_call) {
        const int stopMs = startMs + phase.milliseconds;
        std::array<char, 64> times;
        std::snprintf(times.data(), times.size(), ",%d.%03d,%d.%03d\n", startMs / 1000, startMs % 1000, stopMs / 1000,
                      stopMs % 1000);
        file << phase.name << times.data();
        startMs = stopMs;
    }
    if (!file.flush()) {
        std::fprintf(stderr, "cannot write %s\n", path);
        return false;
    }
    return true;
}

}  // namespace

}  // namespace SampleCall

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_sample_call OUTPUT.wav PHASES.csv\n");
        return 2;
    }
    return SampleCall::writeCall(argv[1]) && SampleCall::writePhases(argv[2]) ? 0 : 1;
}
