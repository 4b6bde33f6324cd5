#include <murvane/audio/computation/AudioExpressionFunctions.h>
#include <murvane/audio/features/SpectralShapeFeatures.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/core/Text.h>
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
        Text::lowerCase(Audio::SpectralRangeFeature::getName()),
        {{Audio::SpectralRangeFeature::getCenterFrequencyName(), ParameterKind::WholeNumber},
         {Audio::SpectralRangeFeature::getFrequencyWidthName(), ParameterKind::WholeNumber}}};
    return table;
}

const ParameterTable& maxSpectralRangesParameters() {
    static const ParameterTable table{
        Text::lowerCase(Audio::MaxSpectralRangesFeature::getName()),
        {{Audio::MaxSpectralRangesFeature::getFrequenciesListName(), ParameterKind::Text}}};
    return table;
}

template <class Adaptor>
void registerFunction() {
    Registry::getInstance().registerFunction(Adaptor::sGetXprName(),
                                             new Registry::ExpressionAllocatorT<UserFunctionImpl<Adaptor>>);
}

// Made while the library is loaded. This initialiser stands in one source with the adaptors' constructors, which the
// shared library keeps whole; a static library would keep it only for a program that names something of this source, or
// that is linked with the whole archive.
[[maybe_unused]] const bool g_bRegistered = [] {
    registerFunction<Audio::SpectrumFeature>();
    registerFunction<Audio::FlatnessFeature>();
    registerFunction<XprHarmonicProduct>();
    registerFunction<XprSilenceRatio>();
    registerFunction<XprNonLogPeaks>();
    registerFunction<XprPeaks>();
    registerFunction<XprPonderatedPeaks>();
    registerFunction<XprZeroCrossingRate>();
    registerFunction<XprSpectralRange>();
    registerFunction<XprMaxSpectralRanges>();
    registerFunction<XprLowFreqEnergyRatios>();
    return true;
}();

}  // namespace

XprHarmonicProduct::XprHarmonicProduct() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

XprSilenceRatio::XprSilenceRatio() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

XprNonLogPeaks::XprNonLogPeaks() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

XprPeaks::XprPeaks() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

XprPonderatedPeaks::XprPonderatedPeaks() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

XprZeroCrossingRate::XprZeroCrossingRate() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

bool XprZeroCrossingRate::hasMemory() const {
    return true;
}

XprSpectralRange::XprSpectralRange()
    : SignalFeatureWithParamAdaptorImpl(sGetXprName(), c_szVariable, spectralRangeParameters()) {}

XprMaxSpectralRanges::XprMaxSpectralRanges()
    : SignalFeatureWithParamAdaptorImpl(sGetXprName(), c_szVariable, maxSpectralRangesParameters()) {}

XprLowFreqEnergyRatios::XprLowFreqEnergyRatios() : SignalFeatureToFunctionAdaptorImpl(sGetXprName(), c_szVariable) {}

}  // namespace Zantrix
