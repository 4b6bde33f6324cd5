#include "FeatureCatalogue.h"

#include <murvane/audio/features/HarmonicProductFeatures.h>
#include <murvane/audio/features/LowFreqEnergyRatioFeatures.h>
#include <murvane/audio/features/NeighbourhoodFeatures.h>
#include <murvane/audio/features/PeakFeatures.h>
#include <murvane/audio/features/SilenceRatioFeatures.h>
#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/audio/features/SpectralShapeFeatures.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>

#include <memory>

namespace Zantrix::Audio {

namespace {

using Feature = Math::SignalFeature;
using Parameters = std::span<const std::uint64_t>;

// Types without a builder are constructed directly where they are needed, or as expression functions.
constexpr auto c_notBuilt = nullptr;

template <class F>
Feature* build(Parameters) {
    return new F;
}

template <class F, auto... Arguments>
Feature* buildWith(Parameters) {
    return new F(Arguments...);
}

Feature* buildZeroCrossingRate(Parameters parameters) {
    return parameters.empty() ? new ZeroCrossingRateFeature : new ZeroCrossingRateFeature(parameters[0]);
}

Feature* buildSpectralRange(Parameters parameters) {
    return parameters.empty() ? new SpectralRangeFeature : new SpectralRangeFeature(parameters[0], parameters[1]);
}

Feature* buildMaxSpectralRanges(Parameters parameters) {
    auto pFeature = std::make_unique<MaxSpectralRangesFeature>();
    for (const std::uint64_t centreHz : parameters) {
        pFeature->addSpectralRange(centreHz, MaxSpectralRangesFeature::c_uiListedWidthHz);
    }
    return pFeature.release();
}

constexpr std::array<CatalogueEntry, c_uiNbOfFeatureTypes> makeCatalogue() {
    using enum AudioFeature::FeatureType;
    using enum ParameterRule;
    return {{
        {ENERGYHISTOGRAM, "ENERGYHISTOGRAM", None, c_notBuilt},
        {CLIPPINGRATE, "CLIPPINGRATE", None, c_notBuilt},
        {ZEROCROSSINGRATE, "ZEROCROSSINGRATE", NoneOrOne, buildZeroCrossingRate},
        {SPECTRUM, "SPECTRUM", None, build<SpectrumFeature>},
        {SPECTRUM100HZ, "SPECTRUM100HZ", None, buildWith<SpectrumReducedFeature, 40>},
        {SPECTRUM200HZ, "SPECTRUM200HZ", None, buildWith<SpectrumReducedFeature, 20>},
        {SPECTRUM500HZ, "SPECTRUM500HZ", None, buildWith<SpectrumReducedFeature, 8>},
        {FLATNESS, "FLATNESS", None, build<FlatnessFeature>},
        {SPECTRALRANGE, "SPECTRALRANGE", NoneOrTwo, buildSpectralRange},
        {MAXSPECTRALRANGES, "MAXSPECTRALRANGES", AtLeastOne, buildMaxSpectralRanges},
        {OLDHARMONICPRODUCT, "OLDHARMONICPRODUCT", None, build<OldHarmonicProductFeature>},
        {HARMONICPRODUCT, "HARMONICPRODUCT", None, build<HarmonicProductFeature>},
        {ROBUSTHARMONICPRODUCT, "ROBUSTHARMONICPRODUCT", None, build<RobustHarmonicProductFeature>},
        {ANTIHARMONICPRODUCT, "ANTIHARMONICPRODUCT", None, build<AntiHarmonicProductFeature>},
        {SPECTRALSLOPE, "SPECTRALSLOPE", None, c_notBuilt},
        {SPECTRALWEIGHTEDAREA, "SPECTRALWEIGHTEDAREA", None, buildWith<SpectralWeightedAreaFeature, 8000, 500, 1500>},
        {SILENCERATIO, "SILENCERATIO", None, buildWith<SilenceRatioFeature, 50>},
        {NOISERATIO, "NOISERATIO", None, buildWith<SilenceRatioFeature, 10>},
        {AMPLITUDEDISTRIBUTION, "AMPLITUDEDISTRIBUTION", None, buildWith<RatiosFeature, false>},
        {TEMPORALAMPLITUDEDISTRIBUTION, "TEMPORALAMPLITUDEDISTRIBUTION", None, buildWith<RatiosFeature, true>},
        {PEAKS, "PEAKS", None, build<PeaksFeature>},
        {NONLOGPEAKS, nullptr, None, c_notBuilt},
        {NEIGHBOURHOODOFMAX, "NEIGHBOURHOODOFMAX", None, build<MaxNeighbourhoodFeature>},
        {LOWFREQENERGYRATIO, "LOWFREQENERGYRATIO", None, build<LowFreqEnergyRatioFeature>},
        {LOWFREQENERGYRATIOS, "LOWFREQENERGYRATIOS", None, build<LowFreqEnergyRatiosFeature>},
        {DELTATOSLIDINGMEAN, "DELTATOSLIDINGMEAN", None, build<DeltaToSlidingMeanFeature>},
        {MYFEATURE, "MYFEATURE", None, c_notBuilt},
    }};
}

constexpr bool isInOrder(const std::array<CatalogueEntry, c_uiNbOfFeatureTypes>& catalogue) {
    for (std::size_t i = 0; i < catalogue.size(); ++i) {
        if (catalogue[i].type != i) {
            return false;
        }
    }
    return true;
}

}  // namespace

constexpr std::array<CatalogueEntry, c_uiNbOfFeatureTypes> c_featureCatalogue = makeCatalogue();

static_assert(isInOrder(c_featureCatalogue));

}  // namespace Zantrix::Audio
