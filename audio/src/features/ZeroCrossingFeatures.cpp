#include "FeatureDiagnostics.h"

#include <murvane/audio/features/ZeroCrossingFeatures.h>

namespace Zantrix::Audio {

namespace {

constexpr const char* c_szSampleRateKey = "signalfeature.SampleRate";

// Whether the signal crosses zero at `sample`. Reaching zero counts once, at the first sample that is exactly zero;
// leaving it does not count.
bool isCrossing(const Fallible<double>& previous, double sample) {
    if (previous.isValid() && previous.getValue() * sample < 0.0) {
        return true;
    }
    return sample == 0.0 && !(previous.isValid() && previous.getValue() == 0.0);
}

}  // namespace

ZeroCrossingRateFeature::ZeroCrossingRateFeature(unsigned long long sampleRate) : m_uiSampleRate(sampleRate) {}

const char* ZeroCrossingRateFeature::getName() {
    return getFeatureTypeString(ZEROCROSSINGRATE);
}

const char* ZeroCrossingRateFeature::sGetXprName() {
    return "zeroCrossingRate";
}

bool ZeroCrossingRateFeature::configure(const ROConfiguration& config) {
    const TraceScope scope(featureLogger(), "ZeroCrossingRateFeature::configure", c_szFeatureSource, __LINE__);

    int sampleRate = 0;
    if (!config.getIntParameter(c_szSampleRateKey, sampleRate)) {
        featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Could not find parameter ",
                            c_szSampleRateKey, " in configuration");
        return false;
    }
    if (sampleRate <= 0) {
        featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Invalid value in parameter ",
                            c_szSampleRateKey);
        return false;
    }
    m_uiSampleRate = static_cast<std::uint64_t>(sampleRate);
    return true;
}

bool ZeroCrossingRateFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (in.empty()) {
        out.push_back(0.0);
        return true;
    }
    std::uint64_t crossings = 0;
    for (const double sample : in) {
        crossings += isCrossing(m_lastSample, sample) ? 1 : 0;
        m_lastSample = sample;
    }
    out.push_back(static_cast<double>(crossings) / static_cast<double>(in.size()));
    return true;
}

Cloneable* ZeroCrossingRateFeature::clone() const {
    return new ZeroCrossingRateFeature(*this);
}

ClippingRateFeature::ClippingRateFeature(double low, double high)
    : m_dLowClippingValue(low), m_dHighClippingValue(high) {}

const char* ClippingRateFeature::getName() {
    return getFeatureTypeString(CLIPPINGRATE);
}

bool ClippingRateFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    std::uint64_t clipped = 0;
    for (const double sample : in) {
        clipped += sample >= m_dHighClippingValue || sample <= m_dLowClippingValue ? 1 : 0;
    }
    out.push_back(static_cast<double>(clipped) / static_cast<double>(in.size()));
    return true;
}

Cloneable* ClippingRateFeature::clone() const {
    return new ClippingRateFeature(*this);
}

}  // namespace Zantrix::Audio
