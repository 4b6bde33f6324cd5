#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

#include <cstddef>
#include <vector>

/// The strongest peaks of a vector, in practice a spectrum.
///
///     AudioFeature
///     ├── PeaksFeature
///     │   └── PonderatedPeaksFeature
///     └── NonLogPeaksFeature
///
/// A peak is the largest absolute value that is left; the whole lobe around it is erased before the next one is sought.
/// A peak that does not exist is reported with height 0.0 at index 0. Each object keeps working storage and so belongs
/// to one thread.
namespace Zantrix::Audio {

/// "PEAKS": heights and positions of the three highest peaks, highest first.
class MURVANE_API PeaksFeature : public AudioFeature {
public:
    static const char* getName();
    static const char* sGetXprName();

    /// Appends three heights, then the natural logarithms of the three positions; log(1e-6) for position 0. False, and
    /// nothing appended, for an empty input.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// The search itself: appends `nbPeaks` heights, then as many positions in the same order.
    ///
    /// @param useLog  positions as in `compute`; plain indices otherwise
    /// @return false, and nothing appended, for an empty input
    bool compute_i(std::size_t nbPeaks, bool useLog, const Math::DoubleVector& in, Math::DoubleVector& out);

    Cloneable* clone() const override;

private:
    Math::DoubleVector m_vWork;  // absolute values, erased as the search goes on
    Math::DoubleVector m_vPeakValues;
    std::vector<std::size_t> m_vPeakPositions;
};

/// The heights of the three highest peaks relative to the mean of the input. Reached as an expression function; it has
/// no type of its own.
class MURVANE_API PonderatedPeaksFeature : public PeaksFeature {
public:
    static const char* sGetXprName();

    /// Leaves exactly three values in `out`; the heights only if `out` was empty on entry, and so was not the input.
    /// False, and nothing changed, for an empty input.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

/// The indices of the five highest peaks, highest first. Reached as an expression function; its type has no name.
class MURVANE_API NonLogPeaksFeature : public AudioFeature {
public:
    /// How many peaks are sought.
    static constexpr std::size_t c_uiNB_OF_MAX = 5;

    static const char* getName();
    static const char* sGetXprName();

    /// Appends five indices. False, and nothing appended, for an empty input.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    PeaksFeature m_peaks;
    Math::DoubleVector m_vTemp;  // heights and positions
};

}  // namespace Zantrix::Audio
