#include "FeatureDiagnostics.h"
#include "SpectralShapeArithmetic.h"

#include <murvane/audio/features/SpectralShapeFeatures.h>

namespace Zantrix::Audio {

FlatnessFeature::FlatnessFeature() : SignalFeatureFunctionAdaptorImpl(sGetXprName(), "x") {}

const char* FlatnessFeature::getName() {
    return getFeatureTypeString(FLATNESS);
}

const char* FlatnessFeature::sGetXprName() {
    return "flatness";
}

bool FlatnessFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    double value = 0.0;
    flatness<double>(in, value);
    out.push_back(value);
    return true;
}

Cloneable* FlatnessFeature::clone() const {
    return new FlatnessFeature(*this);
}

SpectralWeightedAreaFeature::SpectralWeightedAreaFeature(unsigned long long sampleRate, unsigned long long lowHz,
                                                         unsigned long long highHz)
    : m_uiSampleRate(sampleRate), m_uiLowFrequency(lowHz), m_uiHighFrequency(highHz) {}

const char* SpectralWeightedAreaFeature::getName() {
    return getFeatureTypeString(SPECTRALWEIGHTEDAREA);
}

bool SpectralWeightedAreaFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    const std::size_t uiInputSize = in.size();
    if (m_uiIndexMin == 0 && m_uiIndexMax == 0) {
        const BinRange band = bandOfBins(m_uiSampleRate, m_uiLowFrequency, m_uiHighFrequency, uiInputSize);
        m_uiIndexMin = band.first;
        m_uiIndexMax = band.last;
        featureLogger().log(LogLevel::Debug, c_szFeatureSource, __LINE__, "Index min: ", m_uiIndexMin,
                            ", index max: ", m_uiIndexMax);
    }
    if (!featureAssertion(m_uiIndexMin < m_uiIndexMax, "m_uiIndexMin < m_uiIndexMax", __LINE__) ||
        !featureAssertion(m_uiIndexMax < uiInputSize, "m_uiIndexMax < uiInputSize", __LINE__)) {
        return false;
    }
    double area = 0.0;
    weightedArea<double>(in, {m_uiIndexMin, m_uiIndexMax}, m_uiSampleRate, area);
    out.push_back(area);
    return true;
}

Cloneable* SpectralWeightedAreaFeature::clone() const {
    return new SpectralWeightedAreaFeature(*this);
}

const char* SpectralSlopeFeature::getName() {
    return getFeatureTypeString(SPECTRALSLOPE);
}

bool SpectralSlopeFeature::compute(const Math::DoubleVector&, Math::DoubleVector&) {
    return true;
}

Cloneable* SpectralSlopeFeature::clone() const {
    return new SpectralSlopeFeature(*this);
}

}  // namespace Zantrix::Audio
