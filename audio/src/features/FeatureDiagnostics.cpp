#include "FeatureDiagnostics.h"

#include <algorithm>
#include <cctype>

namespace Zantrix::Audio {

const Logger& featureLogger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioFeatureImpl");
    return logger;
}

std::string configKey(const char* featureName, const char* parameterName) {
    std::string key(featureName);
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
    return key + '.' + parameterName;
}

}  // namespace Zantrix::Audio
