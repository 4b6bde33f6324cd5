// Every feature class that computes something, beside the same arithmetic on plain arrays, one window at a time.

#include "BareFeatures.h"
#include "BenchAudio.h"
#include "Pair.h"

#include <murvane/audio.h>
#include <murvane/math/BasicFeatures.h>
#include <murvane/math/RangeFeature.h>

#include <benchmark/benchmark.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace Zantrix::Bench;

using Inputs = const std::vector<Math::DoubleVector>& (*)();
using MakeFeature = std::function<std::unique_ptr<Math::SignalFeature>()>;

Loop computeWithLibrary(Inputs inputs, const MakeFeature& make) {
    return [=, pFeature = std::shared_ptr<Math::SignalFeature>(make()),
            out = Math::DoubleVector()](Record* pRecord) mutable {
        for (const Math::DoubleVector& in : inputs()) {
            out.clear();
            if (!pFeature->compute(in, out)) {
                return;
            }
            benchmark::DoNotOptimize(out.data());
            record(pRecord, out.data(), out.size());
        }
    };
}

template <typename Bare>
Loop computeWithBareLoop(Inputs inputs, const Bare& bare) {
    return [=, feature = bare](Record* pRecord) mutable {
        std::array<double, c_uiWindowSize> out;
        for (const Math::DoubleVector& in : inputs()) {
            const double* const end = feature(in, out.data());
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
            record(pRecord, out.data(), static_cast<std::size_t>(end - out.data()));
        }
    };
}

template <typename Bare>
void add(const char* name, Inputs inputs, const MakeFeature& make, const Bare& bare) {
    registerPair({"feature/" + std::string(name), 0.0, inputs().size(),
                  [=] { return computeWithLibrary(inputs, make); }, [=] { return computeWithBareLoop(inputs, bare); }});
}

template <typename Feature, typename... Arguments>
MakeFeature make(Arguments... arguments) {
    return [=] { return std::make_unique<Feature>(arguments...); };
}

std::unique_ptr<Math::SignalFeature> makeMaxSpectralRanges() {
    auto pFeature = std::make_unique<MaxSpectralRangesFeature>();
    pFeature->addSpectralRange(350, MaxSpectralRangesFeature::c_uiListedWidthHz);
    pFeature->addSpectralRange(440, MaxSpectralRangesFeature::c_uiListedWidthHz);
    return pFeature;
}

const bool registered = [] {
    // Of 256 samples.
    add("Amplitude", windows, make<Math::AmplitudeFeature>(), BareCopy{});
    add("Mean", windows, make<Math::MeanFeature>(), BareMean{});
    add("Spectrum", windows, make<SpectrumFeature>(), BareSpectrum{});
    add("SpectrumReduced(40)", windows, make<SpectrumReducedFeature>(40), BareReducedSpectrum{40});
    add("SpectrumReduced(20)", windows, make<SpectrumReducedFeature>(20), BareReducedSpectrum{20});
    add("SpectrumReduced(8)", windows, make<SpectrumReducedFeature>(8), BareReducedSpectrum{8});
    add("ZeroCrossingRate", windows, make<ZeroCrossingRateFeature>(), BareZeroCrossingRate{});
    add("ClippingRate", windows, make<ClippingRateFeature>(-0.3, 0.3), BareClippingRate{-0.3, 0.3});
    add("SilenceRatio", windows, make<SilenceRatioFeature>(50), BareSilenceRatio{50.0});
    add("SilenceRatioT", windows, make<SilenceRatioFeatureT<50>>(), BareSilenceRatio{50.0});
    add("Ratios", windows, make<RatiosFeature>(false), BareAmplitudeDistribution{false});
    add("Ratios, temporal", windows, make<RatiosFeature>(true), BareAmplitudeDistribution{true});
    add("EnergyHistogram", windows, make<EnergyHistogramFeature>(1.0, 10), BareEnergyHistogram{1.0});
    add("MeanEnergyAboveThresh", windows, make<MeanEnergyAboveThreshFeature>(0.01), BareMeanEnergyAboveThresh{0.01});
    add("MeanMax", windows, make<MeanMaxFeature>(80, 0.001), BareMeanMax{1.0 / 80.0, 0.001});
    // Of 128 bins.
    add("TemporalMean", spectra, make<Math::TemporalMeanFeature>(), BareTemporalMean{});
    add("Range", spectra, make<Math::RangeFeature>(10, 20), BareRange{10, 20});
    add("Flatness", spectra, make<FlatnessFeature>(), BareFlatness{});
    add("SpectralWeightedArea", spectra, make<SpectralWeightedAreaFeature>(c_uiSampleRate, 500, 1500),
        BareWeightedArea{});
    add("LowFreqEnergyRatio", spectra, make<LowFreqEnergyRatioFeature>(), BareLowFreqEnergyRatio{});
    add("LowFreqEnergyRatios", spectra, make<LowFreqEnergyRatiosFeature>(), BareLowFreqEnergyRatios{});
    add("HarmonicProduct", spectra, make<HarmonicProductFeature>(), BareHarmonicProduct<HarmonicBin>{});
    add("RobustHarmonicProduct", spectra, make<RobustHarmonicProductFeature>(),
        BareHarmonicProduct<ShiftedHarmonicBin>{});
    add("OldHarmonicProduct", spectra, make<OldHarmonicProductFeature>(), BareOldHarmonicProduct{});
    add("AntiHarmonicProduct", spectra, make<AntiHarmonicProductFeature>(), BareAntiHarmonicProduct{});
    add("Peaks", spectra, make<PeaksFeature>(), BarePeaks<3>{});
    add("PonderatedPeaks", spectra, make<PonderatedPeaksFeature>(), BarePonderatedPeaks{});
    add("NonLogPeaks", spectra, make<NonLogPeaksFeature>(), BareNonLogPeaks{});
    add("MaxNeighbourhood", spectra, make<MaxNeighbourhoodFeature>(), BareMaxNeighbourhood{});
    add("SpectralRange", spectra, make<SpectralRangeFeature>(440, 20), BareSpectralRange{440});
    add("MaxSpectralRanges", spectra, makeMaxSpectralRanges,
        BareMaxSpectralRanges{{BareSpectralRange{350}, BareSpectralRange{440}}});
    // Of one value.
    add("SlidingWindow", singleValues, make<Math::SlidingWindowFeature>(5), BareSlidingWindow{});
    add("DeltaToSlidingMean", singleValues, make<DeltaToSlidingMeanFeature>(), BareDeltaToSlidingMean{});
    return true;
}();

}  // namespace
