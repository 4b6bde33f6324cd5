#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/core/CloneableObjPtr.h>
#include <murvane/math/RangeFeature.h>

#include <cstdint>
#include <vector>

/// The part of a spectrum around chosen frequencies, such as those of call-progress tones. Input: the L values of a
/// `SpectrumFeature`, bin k at k * 4000 / L Hz.
///
///     Math::RangeFeature, AudioFeature
///     └── SpectralRangeFeature
///     AudioFeature, Math::SignalFeatureWithParameters (virtual)
///     └── MaxSpectralRangesFeature         holds SpectralRangeFeatures
namespace Zantrix::Audio {

/// "SPECTRALRANGE": the bins within a distance of a frequency, and where in its bin the frequency lies.
///
/// The first computation after construction or a complete `configure` turns the frequencies into bin indices; they are
/// kept, also when later spectra have another length.
class MURVANE_API SpectralRangeFeature : public Math::RangeFeature, public AudioFeature {
public:
    /// To be configured: computing fails until a frequency is set.
    SpectralRangeFeature() = default;

    /// @param centreHz  centre frequency
    /// @param widthHz   how far the band reaches to either side of it
    SpectralRangeFeature(unsigned long long centreHz, unsigned long long widthHz);

    static const char* getName();
    static const char* sGetXprName();
    static const char* getCenterFrequencyName();  ///< "frequencyHz"
    static const char* getFrequencyWidthName();   ///< "widthHz"

    /// Reads "spectralrange.frequencyHz" and "spectralrange.widthHz". Always true; what is missing is only logged.
    ///
    /// Without a frequency nothing changes (WARN). Without a width the new frequency is stored, the old width and the
    /// bin indices stay (WARN, ERROR). With both, the next computation works out the indices anew.
    bool configure(const ROConfiguration& config) override;

    /// Appends 2 * w + 1 bins, w being the width in bins rounded up, and the distance in bins, -0.5 to 0.5, from the
    /// frequency of the centre bin to the centre frequency.
    ///
    /// False, after an assertion record and with nothing appended, when there is no centre frequency or the band
    /// reaches down to bin 0. False, with the distance alone appended, when the band does not end within the spectrum.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    bool configureRange(std::size_t binCount);

    std::uint64_t m_uiCenterFrequency = 0;
    std::uint64_t m_uiFrequencyWidth = 0;
    double m_dRelativePosition = 0.0;
    bool m_bRangeConfigured = false;
};

/// "MAXSPECTRALRANGES": of several spectral ranges the one whose strongest bin is the strongest of all; of equals the
/// one added first.
class MURVANE_API MaxSpectralRangesFeature : public AudioFeature, public virtual Math::SignalFeatureWithParameters {
public:
    /// How far a range that comes from a list or from a feature's name reaches to either side of its frequency.
    static constexpr unsigned long long c_uiListedWidthHz = 20;

    /// No range yet.
    MaxSpectralRangesFeature() = default;

    static const char* getName();
    static const char* sGetXprName();
    static const char* getFrequenciesListName();  ///< "frequenciesList"

    /// Adds a range, with the arguments of `SpectralRangeFeature`.
    void addSpectralRange(unsigned long long centreHz, unsigned long long widthHz);

    /// Adds a range for each frequency of "maxspectralranges.frequenciesList", reaching 20 Hz to either side of it:
    /// blank-separated whole numbers of at most 2^32 - 1 Hz. An empty list adds nothing.
    ///
    /// @return false, after an ERROR record, when the key is absent, when a frequency is not such a number (the ranges
    ///         before it were added), and when an exception was caught
    bool configure(const ROConfiguration& config) override;

    /// Appends the values of the winning range as `SpectralRangeFeature` gives them; nothing when no range has a bin
    /// above the lowest finite number.
    ///
    /// False, with `out` unchanged, when there is no range or one of them fails.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    bool addListedRanges(const std::string& list);

    std::vector<CloneableObjPtr<SpectralRangeFeature>> m_vSpectralRanges;
    Math::DoubleVector m_vScratchComputation;  // the values of the range being examined
    Math::DoubleVector m_vBest;                // those of the best one so far
};

}  // namespace Zantrix::Audio
