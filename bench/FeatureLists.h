#pragma once

#include "BareComputer.h"

#include <tuple>
#include <vector>

/// The lists of features that computers and the command are measured with, by name and as bare loops.
namespace Zantrix::Bench {

using Names = std::vector<const char*>;

inline const Names c_vSpectrum = {"SPECTRUM"};

inline auto bareSpectrum() {
    return BareComputer(true, std::tuple(), std::tuple());
}

inline const Names c_vThreeOfSpectrum = {"SPECTRUM", "FLATNESS_SPECTRUM", "LOWFREQENERGYRATIOS_SPECTRUM"};

inline auto bareThreeOfSpectrum() {
    return BareComputer(true, std::tuple(BareFlatness(), BareLowFreqEnergyRatios()), std::tuple());
}

/// What a classifier may ask for: no spectrum in the rows.
inline const Names c_vThreeNarrow = {"FLATNESS_SPECTRUM", "LOWFREQENERGYRATIOS_SPECTRUM", "ZEROCROSSINGRATE"};

inline auto bareThreeNarrow() {
    return BareComputer(false, std::tuple(BareFlatness(), BareLowFreqEnergyRatios()),
                        std::tuple(BareZeroCrossingRate()));
}

inline const Names c_vTen = {"SPECTRUM",
                             "FLATNESS_SPECTRUM",
                             "LOWFREQENERGYRATIOS_SPECTRUM",
                             "SPECTRALWEIGHTEDAREA_SPECTRUM",
                             "HARMONICPRODUCT_SPECTRUM",
                             "PEAKS_SPECTRUM",
                             "MAXSPECTRALRANGES(350,440)_SPECTRUM",
                             "ZEROCROSSINGRATE",
                             "SILENCERATIO",
                             "AMPLITUDEDISTRIBUTION"};

inline auto bareTen() {
    const BareMaxSpectralRanges ranges{{BareSpectralRange(350), BareSpectralRange(440)}};
    return BareComputer(true,
                        std::tuple(BareFlatness(), BareLowFreqEnergyRatios(), BareWeightedArea(),
                                   BareHarmonicProduct<Audio::HarmonicBin>(), BarePeaks<3>(), ranges),
                        std::tuple(BareZeroCrossingRate(), BareSilenceRatio{50.0}, BareAmplitudeDistribution{false}));
}

}  // namespace Zantrix::Bench
