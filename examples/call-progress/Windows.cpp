#include "Windows.h"

#include "Signals.h"

#include <murvane/audio.h>

#include <algorithm>
#include <numeric>

namespace CallProgress {

namespace {

using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::Xpr::ExpressionList;
using Zantrix::Math::Xpr::FormulaError;

constexpr std::size_t c_uiSampleRate = 8000;
constexpr std::size_t c_uiStepSamples = c_uiSampleRate * c_iStepMs / 1000;

// Mean squares. Below -50 dBFS a line is silent: its noise is at -65 or less, its tones at -35 or more.
constexpr double c_dSilence = 1e-5;
// A tone holds nearly all of the power of a window that it fills, and of a pair neither is weak.
constexpr double c_dToneShare = 0.85;
constexpr double c_dWeakestOfPair = 0.1;

// The shares of power around the frequencies of all tones, and the flatness, of a window.
class Classifier {
public:
    Classifier() {
        for (const Tone& tone : m_tones) {
            for (const int hz : tone.frequenciesHz) {
                add("spectralRange(spectrum(x), frequencyHz=" + std::to_string(hz) +
                    ", widthHz=" + std::to_string(tone.halfWidthHz) + ')');
            }
        }
        add("flatness(spectrum(x))");
    }

    // False when the formulas cannot be evaluated.
    bool classify(const DoubleVector& samples, Window& window) {
        if (!m_bComplete || !m_list.bind("x", {&samples, 1}) || !m_list.evaluate()) {
            return false;
        }
        const auto middle = samples.begin() + static_cast<std::ptrdiff_t>((samples.size() - c_uiStepSamples) / 2);
        const double power = std::inner_product(middle, middle + c_uiStepSamples, middle, 0.0) / c_uiStepSamples;
        std::size_t formula = 0;
        double strongest = c_dToneShare;
        window.kind = power < c_dSilence ? c_iSilence : c_iOther;
        for (std::size_t i = 0; i < m_tones.size(); ++i) {
            double sum = 0.0;
            double weakest = 1.0;
            for (std::size_t k = 0; k < m_tones[i].frequenciesHz.size(); ++k) {
                const DoubleVector& range = m_list.getValues(formula++)[0];
                // The last value is no share but where the frequency lies in its bin.
                const double share = std::accumulate(range.begin(), range.end() - 1, 0.0);
                sum += share;
                weakest = std::min(weakest, share);
            }
            const bool isPair = m_tones[i].frequenciesHz.size() > 1;
            if (window.kind != c_iSilence && sum >= strongest && (!isPair || weakest >= c_dWeakestOfPair)) {
                window.kind = static_cast<int>(i);
                strongest = sum;
            }
        }
        window.flatness = m_list.getValues(formula)[0][0];
        return true;
    }

private:
    void add(const std::string& formula) {
        FormulaError error;
        m_bComplete =
            m_list.add(("f" + std::to_string(m_list.getNames().size())).c_str(), formula, error) && m_bComplete;
    }

    std::vector<Tone> m_tones = allTones();
    ExpressionList m_list;
    bool m_bComplete = true;
};

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
    return windows;
}

}  // namespace CallProgress
