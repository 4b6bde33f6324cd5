#include "FeatureDiagnostics.h"

#include <murvane/core/Text.h>

namespace Zantrix::Audio {

const Logger& featureLogger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioFeatureImpl");
    return logger;
}

std::string configKey(const char* featureName, const char* parameterName) {
    return Text::lowerCase(featureName) + '.' + parameterName;
}

}  // namespace Zantrix::Audio
