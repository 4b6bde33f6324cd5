#pragma once

#include <murvane/audio/features/HarmonicProductFeatures.h>
#include <murvane/audio/features/LowFreqEnergyRatioFeatures.h>
#include <murvane/audio/features/PeakFeatures.h>
#include <murvane/audio/features/SilenceRatioFeatures.h>
#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/mathxpr/SignalFeatureToFunctionAdaptorImpl.h>

/// Audio features as functions of formulas. Loading the library registers eleven of them: these, and "spectrum" and
/// "flatness", whose features are functions themselves. Each takes one vector, "x".
namespace Zantrix {

/// harmonicProduct(spectrum)
class MURVANE_API XprHarmonicProduct
    : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::HarmonicProductFeature> {
public:
    XprHarmonicProduct();
};

/// silenceRatio(window): the share of samples below a fiftieth of the peak.
class MURVANE_API XprSilenceRatio
    : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::SilenceRatioFeatureT<50>> {
public:
    XprSilenceRatio();
};

/// nonLogPeaks(spectrum)
class MURVANE_API XprNonLogPeaks : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::NonLogPeaksFeature> {
public:
    XprNonLogPeaks();
};

/// peaks(spectrum)
class MURVANE_API XprPeaks : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::PeaksFeature> {
public:
    XprPeaks();
};

/// ponderatedPeaks(spectrum)
class MURVANE_API XprPonderatedPeaks
    : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::PonderatedPeaksFeature> {
public:
    XprPonderatedPeaks();
};

/// zeroCrossingRate(window), linked from window to window by the last sample.
class MURVANE_API XprZeroCrossingRate
    : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::ZeroCrossingRateFeature> {
public:
    XprZeroCrossingRate();

    /// The feature cannot be reset, and remembers all the same.
    bool hasMemory() const override;
};

/// spectralRange(spectrum, frequencyHz=440, widthHz=20)
class MURVANE_API XprSpectralRange : public Math::Xpr::SignalFeatureWithParamAdaptorImpl<Audio::SpectralRangeFeature> {
public:
    XprSpectralRange();
};

/// maxSpectralRanges(spectrum, frequenciesList="350 440")
class MURVANE_API XprMaxSpectralRanges
    : public Math::Xpr::SignalFeatureWithParamAdaptorImpl<Audio::MaxSpectralRangesFeature> {
public:
    XprMaxSpectralRanges();
};

/// lowFreqEnergyRatios(spectrum)
class MURVANE_API XprLowFreqEnergyRatios
    : public Math::Xpr::SignalFeatureToFunctionAdaptorImpl<Audio::LowFreqEnergyRatiosFeature> {
public:
    XprLowFreqEnergyRatios();
};

}  // namespace Zantrix
