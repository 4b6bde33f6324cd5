#include <murvane/audio/computation/AudioExpressionFunctions.h>
#include <murvane/audio/features/SpectralShapeFeatures.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/UserFunctionImpl.h>

namespace Zantrix {

namespace {

using Math::Xpr::ParameterKind;
using Math::Xpr::ParameterTable;
using Math::Xpr::Registry;
using Math::Xpr::UserFunctionImpl;

constexpr const char* c_szVariable = "x";

const ParameterTable& spectralRangeParameters() {
    static const ParameterTable table{
        "spectralrange",
        {{Audio::SpectralRangeFeature::getCenterFrequencyName(), ParameterKind::WholeNumber},
         {Audio::SpectralRangeFeature::getFrequencyWidthName(), ParameterKind::WholeNumber}}};
    return table;
}

const ParameterTable& maxSpectralRangesParameters() {
    static const ParameterTable table{
        "maxspectralranges", {{Audio::MaxSpectralRangesFeature::getFrequenciesListName(), ParameterKind::Text}}};
    return table;
}

template <class Adaptor>
bool registerAs(const char* name) {
    return Registry::getInstance().registerFunction(name,
                                                    new Registry::ExpressionAllocatorT<UserFunctionImpl<Adaptor>>);
}

// Made while the library is loaded. These initialisers stand in one source with the adaptors' constructors, which the
// shared library keeps whole; a static library would keep them only for a program that names something of this source,
// or that is linked with the whole archive.
[[maybe_unused]] const bool g_bSpectrum = registerAs<Audio::SpectrumFeature>("spectrum");
[[maybe_unused]] const bool g_bFlatness = registerAs<Audio::FlatnessFeature>("flatness");
[[maybe_unused]] const bool g_bHarmonicProduct = registerAs<XprHarmonicProduct>("harmonicProduct");
[[maybe_unused]] const bool g_bSilenceRatio = registerAs<XprSilenceRatio>("silenceRatio");
[[maybe_unused]] const bool g_bNonLogPeaks = registerAs<XprNonLogPeaks>("nonLogPeaks");
[[maybe_unused]] const bool g_bPeaks = registerAs<XprPeaks>("peaks");
[[maybe_unused]] const bool g_bPonderatedPeaks = registerAs<XprPonderatedPeaks>("ponderatedPeaks");
[[maybe_unused]] const bool g_bZeroCrossingRate = registerAs<XprZeroCrossingRate>("zeroCrossingRate");
[[maybe_unused]] const bool g_bSpectralRange = registerAs<XprSpectralRange>("spectralRange");
[[maybe_unused]] const bool g_bMaxSpectralRanges = registerAs<XprMaxSpectralRanges>("maxSpectralRanges");
[[maybe_unused]] const bool g_bLowFreqEnergyRatios = registerAs<XprLowFreqEnergyRatios>("lowFreqEnergyRatios");

}  // namespace

XprHarmonicProduct::XprHarmonicProduct()
    : SignalFeatureToFunctionAdaptorImpl(Audio::HarmonicProductFeature::sGetXprName(), c_szVariable) {}

XprSilenceRatio::XprSilenceRatio()
    : SignalFeatureToFunctionAdaptorImpl(Audio::SilenceRatioFeature::sGetXprName(), c_szVariable) {}

XprNonLogPeaks::XprNonLogPeaks()
    : SignalFeatureToFunctionAdaptorImpl(Audio::NonLogPeaksFeature::sGetXprName(), c_szVariable) {}

XprPeaks::XprPeaks() : SignalFeatureToFunctionAdaptorImpl(Audio::PeaksFeature::sGetXprName(), c_szVariable) {}

XprPonderatedPeaks::XprPonderatedPeaks()
    : SignalFeatureToFunctionAdaptorImpl(Audio::PonderatedPeaksFeature::sGetXprName(), c_szVariable) {}

XprZeroCrossingRate::XprZeroCrossingRate()
    : SignalFeatureToFunctionAdaptorImpl(Audio::ZeroCrossingRateFeature::sGetXprName(), c_szVariable) {}

bool XprZeroCrossingRate::hasMemory() const {
    return true;
}

XprSpectralRange::XprSpectralRange()
    : SignalFeatureWithParamAdaptorImpl(Audio::SpectralRangeFeature::sGetXprName(), c_szVariable,
                                        spectralRangeParameters()) {}

XprMaxSpectralRanges::XprMaxSpectralRanges()
    : SignalFeatureWithParamAdaptorImpl(Audio::MaxSpectralRangesFeature::sGetXprName(), c_szVariable,
                                        maxSpectralRangesParameters()) {}

XprLowFreqEnergyRatios::XprLowFreqEnergyRatios()
    : SignalFeatureToFunctionAdaptorImpl(Audio::LowFreqEnergyRatiosFeature::sGetXprName(), c_szVariable) {}

}  // namespace Zantrix
