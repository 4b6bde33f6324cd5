#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

/// How the amplitudes of a window's samples are distributed below its peak, the largest absolute sample.
///
///     AudioFeature
///     ├── SilenceRatioFeature
///     │   └── SilenceRatioFeatureT<N>
///     └── RatiosFeature, also a Math::SignalFeatureWithMemory
///
/// Samples that are NaN are neither silent nor loud.
namespace Zantrix::Audio {

/// "SILENCERATIO" (divisor 50) and "NOISERATIO" (divisor 10): the share of samples strictly below the peak divided by
/// the divisor, one value in [0, 1].
///
/// A window of zeros has no sample below its threshold of 0 and gives 0.0; an empty window gives NaN. With the divisor
/// 0 the threshold is infinite: 1.0, or 0.0 for zeros.
class MURVANE_API SilenceRatioFeature : public AudioFeature {
public:
    /// A divisor of 0.
    SilenceRatioFeature() = default;

    explicit SilenceRatioFeature(unsigned long long divisor);

    static const char* getName();
    static const char* sGetXprName();

    /// Appends one value; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    double m_dDivisor = 0.0;
};

/// The same with a fixed divisor, for those who need a type with a default constructor. The library holds N = 50.
template <unsigned long long N>
class MURVANE_API SilenceRatioFeatureT : public SilenceRatioFeature {
public:
    SilenceRatioFeatureT() : SilenceRatioFeature(N) {}

    Cloneable* clone() const override { return new SilenceRatioFeatureT(*this); }
};

extern template class MURVANE_API SilenceRatioFeatureT<50>;

/// "AMPLITUDEDISTRIBUTION" and, temporal, "TEMPORALAMPLITUDEDISTRIBUTION": the shares of samples above 1/5 of the peak,
/// above 1/10, above 1/50, and of all others. They sum to 1; an empty window gives four NaN.
class MURVANE_API RatiosFeature : public Math::SignalFeatureWithMemory, public AudioFeature {
public:
    /// @param temporal  measure against the largest peak since construction or the last reset instead of the window's
    explicit RatiosFeature(bool temporal);

    static const char* getName();

    /// Appends four values; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// Forgets the largest peak; always true.
    bool reset() override;

    Cloneable* clone() const override;

private:
    bool m_bTemporal;
    double m_dRunningPeak = 0.0;
};

}  // namespace Zantrix::Audio
