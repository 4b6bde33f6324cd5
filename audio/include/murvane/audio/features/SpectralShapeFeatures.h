#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/mathxpr/FunctionAdaptor.h>

#include <cstdint>

/// The overall shape of a spectrum, one number each. Input: the L values of a `SpectrumFeature`.
///
///     AudioFeature
///     ├── FlatnessFeature, also a Math::Xpr::SignalFeatureFunctionAdaptorImpl
///     ├── SpectralWeightedAreaFeature
///     └── SpectralSlopeFeature
namespace Zantrix::Audio {

/// "FLATNESS": how close the spectrum is to white noise; L times its geometric mean. 1.0 for a perfectly flat spectrum.
///
/// Bins that are exactly zero are left out of the product and still count in L. A silent spectrum, an empty one and one
/// with all its power in a single bin give exactly 1.0.
class MURVANE_API FlatnessFeature : public AudioFeature, public Math::Xpr::SignalFeatureFunctionAdaptorImpl {
public:
    FlatnessFeature();

    static const char* getName();
    static const char* sGetXprName();

    /// Appends one value; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

/// "SPECTRALWEIGHTEDAREA": the power within a band, each bin weighted by its frequency in (truncated) Hz.
///
/// Which bins make the band is worked out from the first spectrum's length and kept for good, also when later spectra
/// have another length.
class MURVANE_API SpectralWeightedAreaFeature : public AudioFeature {
public:
    /// No band: every computation fails.
    SpectralWeightedAreaFeature() = default;

    /// @param sampleRate      of the audio, in Hz
    /// @param lowHz,highHz    edges of the band
    SpectralWeightedAreaFeature(unsigned long long sampleRate, unsigned long long lowHz, unsigned long long highHz);

    static const char* getName();

    /// Appends one value. False, after an assertion record and with nothing appended, when the band is empty or
    /// reversed, or does not end within the spectrum.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    std::uint64_t m_uiSampleRate = 0;
    std::uint64_t m_uiLowFrequency = 0;
    std::uint64_t m_uiHighFrequency = 0;
    std::uint64_t m_uiIndexMin = 0;  // both 0: not yet worked out
    std::uint64_t m_uiIndexMax = 0;
};

/// "SPECTRALSLOPE": a type with a name and no value yet. Constructed directly only; the factory refuses its name.
class MURVANE_API SpectralSlopeFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends nothing; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

}  // namespace Zantrix::Audio
