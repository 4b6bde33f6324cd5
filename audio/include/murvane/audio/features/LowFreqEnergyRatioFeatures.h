#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

/// How much of a window's power lies at low frequencies.
///
///     AudioFeature
///     ├── LowFreqEnergyRatioFeature
///     └── LowFreqEnergyRatiosFeature
///
/// Input: the L values of a `SpectrumFeature`, bin k at k * 4000 / L Hz. As they sum to 1, sums of bins are shares of
/// the power. The bins below f Hz are the first trunc(f / (4000.0 / L)) ones.
namespace Zantrix::Audio {

/// "LOWFREQENERGYRATIO": the share below 1000 Hz.
class MURVANE_API LowFreqEnergyRatioFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends one value, 0.0 for an empty spectrum; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

/// "LOWFREQENERGYRATIOS": the share below 100 Hz and the share from there to 1000 Hz.
class MURVANE_API LowFreqEnergyRatiosFeature : public AudioFeature {
public:
    static const char* getName();
    static const char* sGetXprName();

    /// Appends two values, 0.0 each for an empty spectrum; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

}  // namespace Zantrix::Audio
