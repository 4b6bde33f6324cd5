#include "Windows.h"

#include "Signals.h"

#include <murvane/audio.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace CallProgress {

namespace {

using Zantrix::Audio::FlatnessFeature;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::Xpr::ExpressionList;
using Zantrix::Math::Xpr::FormulaError;

constexpr std::size_t c_uiSampleRate = 8000;
constexpr std::size_t c_uiStepSamples = c_uiSampleRate * c_iStepMs / 1000;
constexpr std::size_t c_uiMiddleSamples = 2 * c_uiStepSamples;

// What a telephone line carries, 200 to 3400 Hz. Offset, hum and rumble lie below.
const char* const c_szBand = "spectralRange(spectrum(x), frequencyHz=1800, widthHz=1600)";
const char* const c_szBandOfMiddle = "spectralRange(spectrum(middle), frequencyHz=1800, widthHz=1600)";

// Mean squares. Below -55 dBFS a line is silent. On a noisier one its own noise is: what is less than 9 dB above the
// softest tenth of the recording, where even that is 18 dB below the loudest. Noise alone is a sound.
constexpr double c_dSilence = 3e-6;
constexpr std::size_t c_uiSoftest = 10;
constexpr double c_dAboveSoftest = 8.0;
constexpr double c_dBelowLoudest = 0.016;
// A tone holds nearly all of the power of a window that it fills, and of a pair neither is weak.
constexpr double c_dToneShare = 0.85;
constexpr double c_dWeakestOfPair = 0.1;
// In 400 Hz the colour of a noise changes little, and lie harmonics of any voice. It falls steeply at the edges of a
// filter, which are in two such bands at most.
constexpr std::ptrdiff_t c_iColourBins = 26;
constexpr std::ptrdiff_t c_iBandsWithEdges = 2;

double sumOf(DoubleVector::const_iterator begin, DoubleVector::const_iterator end) {
    return std::accumulate(begin, end, 0.0);
}

// The least flatness of a narrow band, those aside that may hold an edge.
double flatnessWithoutColour(DoubleVector::const_iterator begin, DoubleVector::const_iterator end) {
    FlatnessFeature feature;
    DoubleVector flatness;
    for (; end - begin >= c_iColourBins; begin += c_iColourBins) {
        DoubleVector shares(begin, begin + c_iColourBins);
        const double sum = sumOf(begin, begin + c_iColourBins);
        std::for_each(shares.begin(), shares.end(), [&](double& share) { share /= sum > 0.0 ? sum : 1.0; });
        feature.compute(shares, flatness);
    }
    std::nth_element(flatness.begin(), flatness.begin() + c_iBandsWithEdges, flatness.end());
    return flatness[c_iBandsWithEdges];
}

// The variance.
double powerOf(DoubleVector::const_iterator begin, DoubleVector::const_iterator end) {
    const double count = static_cast<double>(end - begin);
    const double mean = sumOf(begin, end) / count;
    return std::inner_product(begin, end, begin, 0.0) / count - mean * mean;
}

// The mean square below the window that spectra have, so that their shares are of it.
double powerBelowHann(const DoubleVector& samples) {
    const double last = static_cast<double>(samples.size() - 1);
    double power = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double weight = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / last);
        power += weight * weight * samples[i] * samples[i];
        weights += weight * weight;
    }
    return power / weights;
}

// The level, the tone, and the flatness of a window.
class Classifier {
public:
    Classifier() {
        add(c_szBand);
        add(c_szBandOfMiddle);
        for (const Tone& tone : m_tones) {
            for (const int hz : tone.frequenciesHz) {
                add("spectralRange(spectrum(x), frequencyHz=" + std::to_string(hz) +
                    ", widthHz=" + std::to_string(tone.halfWidthHz) + ')');
            }
        }
    }

    // False when the formulas cannot be evaluated.
    bool classify(const DoubleVector& samples, Window& window) {
        const auto middle = samples.begin() + static_cast<std::ptrdiff_t>((samples.size() - c_uiMiddleSamples) / 2);
        m_vMiddle.assign(middle, middle + c_uiMiddleSamples);
        if (!m_bComplete || !m_list.bind("x", {&samples, 1}) || !m_list.bind("middle", {&m_vMiddle, 1}) ||
            !m_list.evaluate()) {
            return false;
        }
        // The last value of a range is no share but where the frequency lies in its bin.
        const DoubleVector& band = m_list.getValues(0)[0];
        const double inBand = sumOf(band.begin(), band.end() - 1);
        const DoubleVector& bandOfMiddle = m_list.getValues(1)[0];
        // Without rumble, but as sharp in time as a step is.
        const auto step = m_vMiddle.begin() + c_uiStepSamples / 2;
        window.level = std::min(powerOf(step, step + c_uiStepSamples),
                                powerBelowHann(m_vMiddle) * sumOf(bandOfMiddle.begin(), bandOfMiddle.end() - 1));
        if (!std::isfinite(inBand) || !std::isfinite(window.level)) {
            window = {};  // a recording of floats may hold what is no number
            return true;
        }
        window.kind = c_iOther;
        std::size_t formula = 2;
        double strongest = c_dToneShare * inBand;
        for (std::size_t i = 0; i < m_tones.size(); ++i) {
            double sum = 0.0;
            double weakest = 1.0;
            for (std::size_t k = 0; k < m_tones[i].frequenciesHz.size(); ++k) {
                const DoubleVector& range = m_list.getValues(formula++)[0];
                const double share = sumOf(range.begin(), range.end() - 1);
                sum += share;
                weakest = std::min(weakest, share);
            }
            const bool isPair = m_tones[i].frequenciesHz.size() > 1;
            if (sum >= strongest && (!isPair || weakest >= c_dWeakestOfPair * inBand)) {
                window.kind = static_cast<int>(i);
                strongest = sum;
            }
        }
        window.flatness = flatnessWithoutColour(band.begin(), band.end() - 1);
        return true;
    }

private:
    void add(const std::string& formula) {
        FormulaError error;
        m_bComplete =
            m_list.add(("f" + std::to_string(m_list.getNames().size())).c_str(), formula, error) && m_bComplete;
    }

    std::vector<Tone> m_tones = allTones();
    ExpressionList m_list{{"x", "middle"}};
    DoubleVector m_vMiddle;
    bool m_bComplete = true;
};

// Silence is told when the whole recording is known, whose own noise decides.
void findSilence(std::vector<Window>& windows) {
    std::vector<double> levels;
    for (const Window& window : windows) {
        levels.push_back(window.level);
    }
    std::sort(levels.begin(), levels.end());
    const double above = levels[levels.size() / c_uiSoftest] * c_dAboveSoftest;
    const double threshold = above < levels.back() * c_dBelowLoudest ? std::max(c_dSilence, above) : c_dSilence;
    for (Window& window : windows) {
        if (window.level < threshold) {
            window.kind = c_iSilence;
        }
    }
}

}  // namespace

std::optional<std::vector<Window>> classifyWindows(const std::string& path, std::string& error) {
    LinearAudioWindower::Config config;
    config.m_uiSampleRate = c_uiSampleRate;
    config.m_uiWindowSizeMs = c_iWindowMs;
    config.m_uiWindowOverlapMs = c_iWindowMs - c_iStepMs;
    WindowedAudioFileReader reader;
    if (!reader.configure(config) || !reader.setSourceAudioFile(path.c_str())) {
        error = "cannot be read as a mono recording";
        return {};
    }
    if (reader.getSamplingRate() != c_uiSampleRate) {
        error = "has " + std::to_string(reader.getSamplingRate()) + " samples per second; the detectors are made for " +
                std::to_string(c_uiSampleRate);
        return {};
    }
    std::vector<Window> windows;
    Classifier classifier;
    DoubleVector samples;
    while (reader.getNextWindow(samples)) {
        if (!classifier.classify(samples, windows.emplace_back())) {
            error = "cannot be analysed";
            return {};
        }
    }
    if (windows.empty()) {
        error = "is shorter than a window of " + std::to_string(c_iWindowMs) + " ms";
        return {};
    }
    findSilence(windows);
    return windows;
}

}  // namespace CallProgress
