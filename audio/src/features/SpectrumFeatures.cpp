#include "FeatureDiagnostics.h"
#include "SpectrumReduction.h"

#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/math/MathFourierTransform.h>

#include <span>

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
    if (m_pSignalWindow.isNull()) {
        m_pSignalWindow = CloneableObjPtr<SignalWindow>(new HannWindow(uiSizeFFT));
    }
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
    Math::realFourierTransform(values);
    const std::size_t uiNbOfBins = uiSizeFFT / 2;
    double total = 0.0;
    for (std::size_t k = 0; k < uiNbOfBins; ++k) {
        const double re = values[2 * k];
        const double im = k == 0 ? 0.0 : values[2 * k + 1];
        values[k] = re * re + im * im;
        total += values[k];
    }
    out.resize(start + uiNbOfBins);
    if (total != 0.0) {
        const double factor = 1.0 / total;
        for (std::size_t k = 0; k < uiNbOfBins; ++k) {
            out[start + k] *= factor;
        }
    }
    return true;
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

Cloneable* SpectrumReducedFeature::clone() const {
    return new SpectrumReducedFeature(*this);
}

}  // namespace Zantrix::Audio
