#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/core/CloneableObjPtr.h>
#include <murvane/mathxpr/FunctionAdaptor.h>

#include <cstddef>
#include <span>
#include <vector>

/// Spectra of a window of samples.
///
///     AudioFeature (virtual), Math::Xpr::SignalFeatureFunctionAdaptorImpl
///     └── SpectrumFeature
///         └── SpectrumReducedFeature
namespace Zantrix::Audio {

/// "SPECTRUM": the normalised power spectrum of a window.
///
/// Input: N samples, N a power of two. Output: N/2 values that sum to 1; value k is the share of the window's power at
/// frequency k * rate / N. Silence gives zeros. The samples are weighted by a Hann window, made from the first input's
/// length and kept.
class MURVANE_API SpectrumFeature : public virtual AudioFeature, public Math::Xpr::SignalFeatureFunctionAdaptorImpl {
public:
    SpectrumFeature();

    static const char* getName();
    static const char* sGetXprName();

    /// False, after an assertion record, when the input is not as long as the first one; `out` then holds the samples
    /// of the input behind what it held. A length that is not a power of two is reported and transformed all the same.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// Several windows at a time are several times as fast as one by one, with the same values to the bit.
    bool computeWindows(std::span<const Math::DoubleVector> in, std::span<Math::DoubleVector> out) override;

    Cloneable* clone() const override;

private:
    void makeWindow(std::size_t uiWindowSize);

    CloneableObjPtr<SignalWindow> m_pSignalWindow;
    Math::DoubleVector m_vScratch;  // of computeWindows, storage kept
};

/// "SPECTRUM100HZ", "SPECTRUM200HZ", "SPECTRUM500HZ": the power spectrum summed into equal bands.
///
/// Output: as many values as bands; the whole spectrum when it has fewer bins than bands. Bands have L / bands bins
/// each, truncated. The last band also takes in what the reduction leaves over: see `reduceSpectrum`. `getName()` and
/// `sGetXprName()` are the base's.
class MURVANE_API SpectrumReducedFeature : public SpectrumFeature {
public:
    /// @param bandCount  number of bands; with 0 the spectrum stays as it is
    explicit SpectrumReducedFeature(unsigned long long bandCount);

    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    bool computeWindows(std::span<const Math::DoubleVector> in, std::span<Math::DoubleVector> out) override;

    Cloneable* clone() const override;

private:
    unsigned long long m_uiBandCount;
    std::vector<std::size_t> m_vStarts;  // of computeWindows: where each window's values begin
};

}  // namespace Zantrix::Audio
