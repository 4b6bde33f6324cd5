#pragma once

#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>

#include <string>

/// What all features report with: one logger and one source name, whichever file a feature lives in.
namespace Zantrix::Audio {

inline constexpr const char* c_szFeatureSource = "AudioFeatureImpl";

const Logger& featureLogger();

/// `Assertion` with the features' source name.
inline bool featureAssertion(bool condition, const char* conditionText, int line) {
    return Assertion(condition, conditionText, c_szFeatureSource, line);
}

/// "<type string in lower case>.<parameter>": the key of a feature's own parameter.
std::string configKey(const char* featureName, const char* parameterName);

}  // namespace Zantrix::Audio
