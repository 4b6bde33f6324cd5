#pragma once

#include <murvane/core/Fallible.h>
#include <murvane/math/SignalFeature.h>

namespace Zantrix::Audio {

/// The base of every audio feature, with the catalogue of their types and names.
///
/// A feature class's `getName()` is its type string, a literal; where one class serves several types, that of the
/// first. Its `sGetXprName()` is its function's name in formulas, a literal; a class without one is no function.
///
/// A feature's `compute` appends its values to `out` and keeps what `out` already holds. Features with parameters read
/// them under keys made of the lower-cased type string, a point and the parameter's name, such as
/// "spectralrange.frequencyHz".
class MURVANE_API AudioFeature : public virtual Math::SignalFeature {
public:
    /// The feature types. Their numbers are fixed.
    enum FeatureType : unsigned {
        ENERGYHISTOGRAM = 0,
        CLIPPINGRATE = 1,
        ZEROCROSSINGRATE = 2,
        SPECTRUM = 3,
        SPECTRUM100HZ = 4,
        SPECTRUM200HZ = 5,
        SPECTRUM500HZ = 6,
        FLATNESS = 7,
        SPECTRALRANGE = 8,
        MAXSPECTRALRANGES = 9,
        OLDHARMONICPRODUCT = 10,
        HARMONICPRODUCT = 11,
        ROBUSTHARMONICPRODUCT = 12,
        ANTIHARMONICPRODUCT = 13,
        SPECTRALSLOPE = 14,
        SPECTRALWEIGHTEDAREA = 15,
        SILENCERATIO = 16,
        NOISERATIO = 17,
        AMPLITUDEDISTRIBUTION = 18,
        TEMPORALAMPLITUDEDISTRIBUTION = 19,
        PEAKS = 20,
        NONLOGPEAKS = 21,  ///< has no type string and is not parsed: reached as an expression function only
        NEIGHBOURHOODOFMAX = 22,
        LOWFREQENERGYRATIO = 23,
        LOWFREQENERGYRATIOS = 24,
        DELTATOSLIDINGMEAN = 25,
        MYFEATURE = 26
    };

    /// The type's name in upper case; "???Feature_FeatureType???" for a value without one. A literal.
    static const char* getFeatureTypeString(FeatureType type);

    /// The type of a name, compared without regard to case; invalid for an unknown name and for null.
    static Fallible<FeatureType> parseFeatureType(const char* name);
};

}  // namespace Zantrix::Audio
