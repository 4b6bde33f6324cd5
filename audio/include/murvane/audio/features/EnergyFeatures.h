#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

#include <cstdint>
#include <vector>

/// The energies (squared samples) and amplitudes of a window's samples. Constructed directly: the factory has no names
/// for their parameters.
///
///     AudioFeature
///     ├── EnergyHistogramFeature
///     ├── MeanEnergyAboveThreshFeature, also a Math::SignalFeatureWithMemory
///     └── MeanMaxFeature, also a Math::SignalFeatureWithMemory (virtual)
namespace Zantrix::Audio {

/// "ENERGYHISTOGRAM": how many samples have an energy in each of n equal bins from 0 to a maximum. Energies at or above
/// the maximum, and NaN, count in the last bin.
class MURVANE_API EnergyHistogramFeature : public AudioFeature {
public:
    EnergyHistogramFeature(double energyMax, unsigned long long nbOfBins);

    static const char* getName();

    /// Appends n counts, not normalised. False, after an assertion record and with nothing appended, when there are no
    /// bins or the maximum is not positive.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    double m_dEnergyMaxValue;
    std::uint64_t m_uiNbOfBins;
    std::vector<std::uint64_t> m_vBins;
};

/// The samples above an energy threshold, so far.
struct EnergySum {
    std::uint64_t uiCount = 0;
    double dSum = 0.0;
};

/// The mean energy of all samples since construction or the last reset whose energy is strictly above a threshold.
class MURVANE_API MeanEnergyAboveThreshFeature : public Math::SignalFeatureWithMemory, public AudioFeature {
public:
    explicit MeanEnergyAboveThreshFeature(double threshold);

    /// Appends one value, 0.0 while no sample was above the threshold; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// Forgets all samples; always true.
    bool reset() override;

    Cloneable* clone() const override;

private:
    double m_dThreshold;
    EnergySum m_accepted;
};

/// The maxima of the segments that were accepted, so far, and the segment that is open.
struct SegmentMaxima {
    std::uint64_t uiCount = 0;
    double dSum = 0.0;
    double dMinimum = 1.0;          // full scale; the first segment to close replaces it
    double dPhase = 0.0;            // of the open segment, as all below
    double dCurrentMaximum = -1.0;  // below every amplitude: no sample yet
};

/// Mean and minimum of the largest amplitudes of successive segments of the signal, since construction or the last
/// reset.
///
/// Segments are about n / 2 + 1 samples long, the first one a sample shorter, and go on from window to window. Measured
/// from a floor, a maximum of more than twice the mean so far discards all before it, and one of less than half the
/// mean is ignored.
class MURVANE_API MeanMaxFeature : public virtual Math::SignalFeatureWithMemory, public AudioFeature {
public:
    /// @param n      each sample advances the phase by 1 / n; a segment closes above 0.5
    /// @param floor  its absolute value counts
    MeanMaxFeature(unsigned long long n, double floor);

    /// Appends the mean, then the minimum; while no segment has closed, both values are the maximum of the open one,
    /// which is -1.0 before the first sample. Always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// Forgets all segments; always true.
    bool reset() override;

    Cloneable* clone() const override;

private:
    double m_dStep;
    double m_dFloor;
    SegmentMaxima m_maxima;
};

}  // namespace Zantrix::Audio
