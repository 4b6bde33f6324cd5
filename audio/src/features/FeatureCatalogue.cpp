#include "FeatureCatalogue.h"

#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>

namespace Zantrix::Audio {

namespace {

using Feature = Math::SignalFeature;
using Parameters = std::span<const std::uint64_t>;

// The four types without a builder are constructed directly where they are needed, and a name is not enough to do so.
constexpr auto c_notBuilt = nullptr;

template <class F>
Feature* build(Parameters) {
    return new F;
}

template <class F, auto Argument>
Feature* buildWith(Parameters) {
    return new F(Argument);
}

Feature* buildZeroCrossingRate(Parameters parameters) {
    return parameters.empty() ? new ZeroCrossingRateFeature : new ZeroCrossingRateFeature(parameters[0]);
}

constexpr std::array<CatalogueEntry, c_uiNbOfFeatureTypes> makeCatalogue() {
    using enum AudioFeature::FeatureType;
    using enum ParameterRule;
    return {{
        {ENERGYHISTOGRAM, "ENERGYHISTOGRAM", "energyhistogram", None, c_notBuilt},
        {CLIPPINGRATE, "CLIPPINGRATE", "clippingrate", None, c_notBuilt},
        {ZEROCROSSINGRATE, "ZEROCROSSINGRATE", "zerocrossingrate", NoneOrOne, buildZeroCrossingRate},
        {SPECTRUM, "SPECTRUM", "spectrum", None, build<SpectrumFeature>},
        {SPECTRUM100HZ, "SPECTRUM100HZ", "spectrum100hz", None, buildWith<SpectrumReducedFeature, 40>},
        {SPECTRUM200HZ, "SPECTRUM200HZ", "spectrum200hz", None, buildWith<SpectrumReducedFeature, 20>},
        {SPECTRUM500HZ, "SPECTRUM500HZ", "spectrum500hz", None, buildWith<SpectrumReducedFeature, 8>},
        {FLATNESS, "FLATNESS", "flatness", None, c_notBuilt},
        {SPECTRALRANGE, "SPECTRALRANGE", "spectralrange", NoneOrTwo, c_notBuilt},
        {MAXSPECTRALRANGES, "MAXSPECTRALRANGES", "maxspectralranges", AtLeastOne, c_notBuilt},
        {OLDHARMONICPRODUCT, "OLDHARMONICPRODUCT", "oldharmonicproduct", None, c_notBuilt},
        {HARMONICPRODUCT, "HARMONICPRODUCT", "harmonicproduct", None, c_notBuilt},
        {ROBUSTHARMONICPRODUCT, "ROBUSTHARMONICPRODUCT", "robustharmonicproduct", None, c_notBuilt},
        {ANTIHARMONICPRODUCT, "ANTIHARMONICPRODUCT", "antiharmonicproduct", None, c_notBuilt},
        {SPECTRALSLOPE, "SPECTRALSLOPE", "spectralslope", None, c_notBuilt},
        {SPECTRALWEIGHTEDAREA, "SPECTRALWEIGHTEDAREA", "spectralweightedarea", None, c_notBuilt},
        {SILENCERATIO, "SILENCERATIO", "silenceratio", None, c_notBuilt},
        {NOISERATIO, "NOISERATIO", "noiseratio", None, c_notBuilt},
        {AMPLITUDEDISTRIBUTION, "AMPLITUDEDISTRIBUTION", "amplitudedistribution", None, c_notBuilt},
        {TEMPORALAMPLITUDEDISTRIBUTION, "TEMPORALAMPLITUDEDISTRIBUTION", "temporalamplitudedistribution", None,
         c_notBuilt},
        {PEAKS, "PEAKS", "peaks", None, c_notBuilt},
        {NONLOGPEAKS, nullptr, nullptr, None, c_notBuilt},
        {NEIGHBOURHOODOFMAX, "NEIGHBOURHOODOFMAX", "neighbourhoodofmax", None, c_notBuilt},
        {LOWFREQENERGYRATIO, "LOWFREQENERGYRATIO", "lowfreqenergyratio", None, c_notBuilt},
        {LOWFREQENERGYRATIOS, "LOWFREQENERGYRATIOS", "lowfreqenergyratios", None, c_notBuilt},
        {DELTATOSLIDINGMEAN, "DELTATOSLIDINGMEAN", "deltatoslidingmean", None, c_notBuilt},
        {MYFEATURE, "MYFEATURE", "myfeature", None, c_notBuilt},
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

static_assert(isInOrder(makeCatalogue()));

}  // namespace

const std::array<CatalogueEntry, c_uiNbOfFeatureTypes> c_featureCatalogue = makeCatalogue();

}  // namespace Zantrix::Audio
