#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/core/Fallible.h>

#include <cstdint>

/// Rates of events among the samples of a window.
///
///     AudioFeature
///     ├── ZeroCrossingRateFeature, also a SignalFeatureWithParameters
///     └── ClippingRateFeature
namespace Zantrix::Audio {

/// "ZEROCROSSINGRATE": the share of samples at which the signal crosses or reaches zero, one value in [0, 1]; 0.0 for
/// an empty window.
///
/// The last sample of a window is remembered: the first comparison of the next window is with it, also where windows
/// overlap. Only a new object starts without one; there is no reset.
class MURVANE_API ZeroCrossingRateFeature : public AudioFeature, public virtual Math::SignalFeatureWithParameters {
public:
    ZeroCrossingRateFeature() = default;

    /// @param sampleRate  in Hz; kept, though the rate of crossings is per sample
    explicit ZeroCrossingRateFeature(unsigned long long sampleRate);

    static const char* getName();
    static const char* sGetXprName();

    /// Reads "signalfeature.SampleRate"; false, after an ERROR record and with nothing changed, when it is absent or
    /// not positive.
    bool configure(const ROConfiguration& config) override;

    /// Appends one value; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    std::uint64_t m_uiSampleRate = 0;
    Fallible<double> m_lastSample;
};

/// "CLIPPINGRATE": the share of samples at or beyond two thresholds, one value in [0, 1]; NaN for an empty window.
class MURVANE_API ClippingRateFeature : public AudioFeature {
public:
    /// @param low,high  samples <= low and samples >= high are clipped
    ClippingRateFeature(double low, double high);

    static const char* getName();

    /// Appends one value; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    double m_dLowClippingValue;
    double m_dHighClippingValue;
};

}  // namespace Zantrix::Audio
