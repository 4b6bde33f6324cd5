#include "Speech.h"

#include "Arithmetic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace SampleCall {

namespace {

constexpr std::size_t c_uiFormants = 4;
using Formants = std::array<double, c_uiFormants>;

struct VowelSound {
    Formants formantsHz;
    double effort;  // evens out most of what low first formants lose in loudness
};

// In the order of Vowel. The first three formants are averages over men, Peterson and Barney, Control Methods Used in a
// Study of the Vowels, JASA 24 (1952), table II; the fourth hardly moves and closes the telephone band.
constexpr std::array<VowelSound, 6> c_vowels = {{
    {{270, 2290, 3010, 3500}, 2.2},
    {{530, 1840, 2480, 3500}, 1.3},
    {{730, 1090, 2440, 3500}, 0.8},
    {{570, 840, 2410, 3500}, 0.9},
    {{300, 870, 2240, 3500}, 1.7},
    {{640, 1190, 2390, 3500}, 1.0},
}};
constexpr Formants c_nasalMurmur = {250, 1100, 2200, 3400};
constexpr Formants c_bandwidths = {60, 90, 150, 250};

// What a stretch of a syllable asks of the voice, which follows with some inertia.
struct Target {
    int milliseconds;  // at the start of the syllable
    double voicing;
    double noise;
    double noiseHz;
};

// In the order of Onset: a closure or a noise, and the burst that ends a closure.
constexpr std::array<std::array<Target, 2>, 4> c_onsets = {{
    {{{0, 0.0, 0.0, 0.0}, {0, 0.0, 0.0, 0.0}}},
    {{{60, 0.2, 0.0, 0.0}, {0, 0.0, 0.0, 0.0}}},
    {{{45, 0.0, 0.0, 0.0}, {14, 0.0, 0.3, 2600.0}}},
    {{{85, 0.0, 0.17, 2900.0}, {0, 0.0, 0.0, 0.0}}},
}};

// How fast the voice follows its target, as the share of the way gone in one sample.
constexpr double c_dFormantFollow = 1.0 / samplesOf(18);
constexpr double c_dPitchFollow = 1.0 / samplesOf(40);
constexpr double c_dVoicingFollow = 1.0 / samplesOf(9);
constexpr double c_dNoiseFollow = 1.0 / samplesOf(4);

// The phrase's pitch falls from the first to the second.
constexpr double c_dFirstPitchHz = 128.0;
constexpr double c_dLastPitchHz = 92.0;
constexpr int c_iFinalFadeMs = 60;

// A second-order resonator of unit gain at 0 Hz, its frequency free to move from sample to sample.
class Resonator {
public:
    double next(double in, double frequencyHz, double bandwidthHz) {
        constexpr double pi = 3.141592653589793;
        const double x = pi * bandwidthHz / c_iSampleRate;
        const double radius = (1.0 - x / 2.0) / (1.0 + x / 2.0);  // exp(-x), near enough
        const double b = 2.0 * radius * cosineOfTurns(frequencyHz / c_iSampleRate);
        const double c = -radius * radius;
        const double out = (1.0 - b - c) * in + b * m_d1 + c * m_d2;
        m_d2 = m_d1;
        m_d1 = out;
        return out;
    }

private:
    double m_d1 = 0.0;
    double m_d2 = 0.0;
};

// The flow through the glottis over one period, phase 0 to 1: opens, closes faster, stays closed.
double glottalFlow(double phase) {
    constexpr double opened = 0.40;
    constexpr double closed = 0.58;
    if (phase < opened) {
        const double t = phase / opened;
        return t * t * (3.0 - 2.0 * t);
    }
    if (phase < closed) {
        const double t = (phase - opened) / (closed - opened);
        return 1.0 - t * t;
    }
    return 0.0;
}

class Voice {
public:
    explicit Voice(unsigned seed) : m_random(seed) {}

    double next(const Target& target, const Formants& formants, double pitchHz) {
        m_dVoicing += (target.voicing - m_dVoicing) * c_dVoicingFollow;
        m_dNoise += (target.noise - m_dNoise) * c_dNoiseFollow;
        // One draw a statement: the order of two in one expression is the compiler's.
        const double breath = 0.003 * m_random.next();
        double voiced = m_dVoicing * (pulse(pitchHz) + breath);
        for (std::size_t i = 0; i < c_uiFormants; ++i) {
            m_formants[i] += (formants[i] - m_formants[i]) * c_dFormantFollow;
            voiced = m_resonators[i].next(voiced, m_formants[i], c_bandwidths[i]);
        }
        const double hiss = m_noiseResonator.next(m_random.next(), target.noiseHz, 900.0);
        // Differences stand for the radiation from the mouth, and take what a telephone does not carry.
        const double sum = voiced + m_dNoise * 0.1 * (hiss - m_dLastHiss);
        m_dLastHiss = hiss;
        m_dHighPass = 0.8 * (m_dHighPass + sum - m_dLastSum);
        m_dLastSum = sum;
        return m_dHighPass;
    }

private:
    double pulse(double pitchHz) {
        m_dPitchHz += (pitchHz - m_dPitchHz) * c_dPitchFollow;
        m_dPhase += m_dPitchHz * m_dJitter / c_iSampleRate;
        if (m_dPhase >= 1.0) {
            m_dPhase -= 1.0;
            m_dJitter = 1.0 + 0.012 * m_random.next();
            m_dShimmer = 1.0 + 0.06 * m_random.next();
        }
        const double flow = m_dShimmer * glottalFlow(m_dPhase);
        const double difference = flow - m_dLastFlow;
        m_dLastFlow = flow;
        return difference;
    }

    Noise m_random;
    std::array<Resonator, c_uiFormants> m_resonators;
    Resonator m_noiseResonator;
    Formants m_formants = c_vowels[static_cast<std::size_t>(Vowel::Uh)].formantsHz;
    double m_dVoicing = 0.0;
    double m_dNoise = 0.0;
    double m_dPitchHz = c_dFirstPitchHz;
    double m_dPhase = 0.0;
    double m_dJitter = 1.0;
    double m_dShimmer = 1.0;
    double m_dLastFlow = 0.0;
    double m_dLastHiss = 0.0;
    double m_dLastSum = 0.0;
    double m_dHighPass = 0.0;
};

}  // namespace

std::vector<double> speak(std::span<const Syllable> syllables, double peak, unsigned seed) {
    int length = 0;
    for (const Syllable& syllable : syllables) {
        length += samplesOf(syllable.milliseconds);
    }
    std::vector<double> samples;
    samples.reserve(static_cast<std::size_t>(length));
    Voice voice(seed);
    int position = 0;
    for (const Syllable& syllable : syllables) {
        const VowelSound& vowel = c_vowels[static_cast<std::size_t>(syllable.vowel)];
        const auto& onset = c_onsets[static_cast<std::size_t>(syllable.onset)];
        const int first = samplesOf(onset[0].milliseconds);
        const int second = first + samplesOf(onset[1].milliseconds);
        const int count = samplesOf(syllable.milliseconds);
        for (int i = 0; i < count; ++i, ++position) {
            const double sung = static_cast<double>(i) / count;  // louder at first
            const double voicing = syllable.stress * vowel.effort * (1.0 - 0.8 * sung * sung);
            Target target = i < first ? onset[0] : i < second ? onset[1] : Target{0, voicing, 0.0, 0.0};
            if (length - position < samplesOf(c_iFinalFadeMs)) {
                target.voicing = 0.0;
            }
            const bool isMurmur = i < first && syllable.onset == Onset::Nasal;
            const double fall = static_cast<double>(position) / length;
            const double pitchHz =
                (c_dFirstPitchHz + (c_dLastPitchHz - c_dFirstPitchHz) * fall) * (1.0 + 0.25 * (syllable.stress - 1.0));
            samples.push_back(voice.next(target, isMurmur ? c_nasalMurmur : vowel.formantsHz, pitchHz));
        }
    }
    double largest = 0.0;
    for (const double sample : samples) {
        largest = std::max(largest, std::fabs(sample));
    }
    for (double& sample : samples) {
        sample *= peak / largest;
    }
    return samples;
}

}  // namespace SampleCall
