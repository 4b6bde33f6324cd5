#include "FeatureCatalogue.h"

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/core/Text.h>

namespace Zantrix::Audio {

const char* AudioFeature::getFeatureTypeString(FeatureType type) {
    const char* typeString = type < c_featureCatalogue.size() ? c_featureCatalogue[type].typeString : nullptr;
    return typeString != nullptr ? typeString : "???Feature_FeatureType???";
}

Fallible<AudioFeature::FeatureType> AudioFeature::parseFeatureType(const char* name) {
    for (const CatalogueEntry& entry : c_featureCatalogue) {
        if (name != nullptr && entry.typeString != nullptr && Text::equalsIgnoringCase(entry.typeString, name)) {
            return entry.type;
        }
    }
    return {};
}

}  // namespace Zantrix::Audio
