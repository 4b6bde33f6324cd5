#include "SilenceRatioArithmetic.h"

#include <murvane/audio/features/SilenceRatioFeatures.h>

namespace Zantrix::Audio {

template class SilenceRatioFeatureT<50>;

SilenceRatioFeature::SilenceRatioFeature(unsigned long long divisor) : m_dDivisor(static_cast<double>(divisor)) {}

const char* SilenceRatioFeature::getName() {
    return getFeatureTypeString(SILENCERATIO);
}

const char* SilenceRatioFeature::sGetXprName() {
    return "silenceRatio";
}

bool SilenceRatioFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    // Strictly below, so that digital silence gives 0.0: classifiers know it as a window that has no quieter part.
    const double threshold = peakAmplitude(in) / m_dDivisor;
    out.push_back(static_cast<double>(countBelow(in, threshold)) / static_cast<double>(in.size()));
    return true;
}

Cloneable* SilenceRatioFeature::clone() const {
    return new SilenceRatioFeature(*this);
}

RatiosFeature::RatiosFeature(bool temporal) : m_bTemporal(temporal) {}

const char* RatiosFeature::getName() {
    return getFeatureTypeString(AMPLITUDEDISTRIBUTION);
}

bool RatiosFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    const double sampleCount = static_cast<double>(in.size());
    double peak = peakAmplitude(in);
    if (m_bTemporal) {
        // In this order a peak that is NaN leaves the running one as it is.
        peak = m_dRunningPeak = std::max(m_dRunningPeak, peak);
    }
    for (const std::uint64_t count : amplitudeBands(in, peak)) {
        out.push_back(static_cast<double>(count) / sampleCount);
    }
    return true;
}

bool RatiosFeature::reset() {
    m_dRunningPeak = 0.0;
    return true;
}

Cloneable* RatiosFeature::clone() const {
    return new RatiosFeature(*this);
}

}  // namespace Zantrix::Audio
