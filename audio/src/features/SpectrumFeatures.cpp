#include "FeatureDiagnostics.h"
#include "SpectrumKernels.h"
#include "SpectrumReduction.h"

#include <murvane/audio/features/SpectrumFeatures.h>

#include <algorithm>
#include <array>

namespace Zantrix::Audio {

SpectrumFeature::SpectrumFeature() : SignalFeatureFunctionAdaptorImpl(sGetXprName(), "x") {}

const char* SpectrumFeature::getName() {
    return getFeatureTypeString(SPECTRUM);
}

const char* SpectrumFeature::sGetXprName() {
    return "spectrum";
}

bool SpectrumFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (&in == &out) {
        const Math::DoubleVector copy(in);
        return SpectrumFeature::compute(copy, out);
    }
    const std::size_t uiSizeFFT = in.size();
    const std::size_t start = out.size();
    makeWindow(uiSizeFFT);
    out.append(in);
    if (!featureAssertion(m_pSignalWindow->getSize() == static_cast<double>(uiSizeFFT),
                          "m_pSignalWindow->getSize() == uiSizeFFT", __LINE__)) {
        return false;
    }
    const std::span<double> values = std::span<double>(out).subspan(start);
    const std::vector<double>& weights = m_pSignalWindow->getWeights();
    for (std::size_t i = 0; i < uiSizeFFT; ++i) {
        values[i] *= weights[i];
    }
    powerSpectrum(values);
    out.resize(start + uiSizeFFT / 2);
    return true;
}

bool SpectrumFeature::computeWindows(std::span<const Math::DoubleVector> in, std::span<Math::DoubleVector> out) {
    if (in.empty()) {
        return true;
    }
    const std::size_t uiSizeFFT = in.front().size();
    makeWindow(uiSizeFFT);
    const bool areAlike =
        std::all_of(in.begin(), in.end(), [&](const auto& window) { return window.size() == uiSizeFFT; });
    if (!areAlike || m_pSignalWindow->getSize() != static_cast<double>(uiSizeFFT)) {
        return AudioFeature::computeWindows(in, out);
    }
    m_vScratch.resize(spectrumScratchSize(uiSizeFFT));
    // Group by group, so that the addresses fit on the stack.
    std::array<const double*, c_uiWidestLanes> windows{};
    std::array<double*, c_uiWidestLanes> spectra{};
    for (std::size_t first = 0; first < in.size(); first += c_uiWidestLanes) {
        const std::size_t count = std::min(c_uiWidestLanes, in.size() - first);
        for (std::size_t i = 0; i < count; ++i) {
            Math::DoubleVector& values = out[first + i];
            const std::size_t start = values.size();
            values.resize(start + uiSizeFFT / 2);
            windows[i] = in[first + i].data();
            spectra[i] = values.data() + start;
        }
        powerSpectra(std::span(windows).first(count), m_pSignalWindow->getWeights().data(), uiSizeFFT,
                     std::span(spectra).first(count), m_vScratch);
    }
    return true;
}

// The window is made once, from the first input's length.
void SpectrumFeature::makeWindow(std::size_t uiWindowSize) {
    if (m_pSignalWindow.isNull()) {
        m_pSignalWindow = CloneableObjPtr<SignalWindow>(new HannWindow(uiWindowSize));
    }
}

Cloneable* SpectrumFeature::clone() const {
    return new SpectrumFeature(*this);
}

SpectrumReducedFeature::SpectrumReducedFeature(unsigned long long bandCount) : m_uiBandCount(bandCount) {}

bool SpectrumReducedFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    const std::size_t start = out.size();
    if (!SpectrumFeature::compute(in, out)) {
        return false;
    }
    out.resize(start + reduceSpectrum(std::span<double>(out).subspan(start), m_uiBandCount));
    return true;
}

bool SpectrumReducedFeature::computeWindows(std::span<const Math::DoubleVector> in, std::span<Math::DoubleVector> out) {
    m_vStarts.clear();
    for (const Math::DoubleVector& values : out.first(in.size())) {
        m_vStarts.push_back(values.size());
    }
    if (!SpectrumFeature::computeWindows(in, out)) {
        return false;
    }
    for (std::size_t i = 0; i < in.size(); ++i) {
        out[i].resize(m_vStarts[i] + reduceSpectrum(std::span<double>(out[i]).subspan(m_vStarts[i]), m_uiBandCount));
    }
    return true;
}

Cloneable* SpectrumReducedFeature::clone() const {
    return new SpectrumReducedFeature(*this);
}

}  // namespace Zantrix::Audio
