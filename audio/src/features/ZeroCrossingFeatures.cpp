#include "FeatureDiagnostics.h"
#include "ZeroCrossingArithmetic.h"

#include <murvane/audio/features/ZeroCrossingFeatures.h>

#include <limits>

namespace Zantrix::Audio {

namespace {

constexpr const char* c_szSampleRateKey = "signalfeature.SampleRate";

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
    const double previous = m_lastSample.isValid() ? m_lastSample.getValue() : std::numeric_limits<double>::quiet_NaN();
    const std::uint64_t crossings = countCrossings(in, previous);
    m_lastSample = in.back();
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
