#include "FeatureCatalogue.h"

#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>
#include <murvane/core/Text.h>

#include <vector>

namespace Zantrix::Audio {

namespace {

constexpr const char* c_szSource = "AudioFeatureFactory";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioFeatureFactory");
    return logger;
}

bool fits(ParameterRule rule, const StringVector& vParams) {
    switch (rule) {
        case ParameterRule::None:
            return Assertion(vParams.empty(), "vParams.empty()", c_szSource, __LINE__);
        case ParameterRule::NoneOrOne:
            return vParams.empty() || Assertion(vParams.size() == 1, "vParams.size() == 1", c_szSource, __LINE__);
        case ParameterRule::NoneOrTwo:
            return vParams.empty() || Assertion(vParams.size() == 2, "vParams.size() == 2", c_szSource, __LINE__);
        case ParameterRule::AtLeastOne:
            return Assertion(!vParams.empty(), "!vParams.empty()", c_szSource, __LINE__);
    }
    return false;
}

// Reads as far as a stream does: "100x" is 100, and a negative number wraps around.
bool parse(const StringVector& vParams, std::vector<std::uint64_t>& values) {
    for (const std::string& param : vParams) {
        std::uint64_t value = 0;
        if (!(Text::reader(param) >> value)) {
            return false;
        }
        values.push_back(value);
    }
    return true;
}

}  // namespace

const char* AudioFeatureFactory::sGetFactoryName() {
    return "AudioFeatureFactory";
}

const char* AudioFeatureFactory::getFactoryName() const {
    return sGetFactoryName();
}

Math::SignalFeature* AudioFeatureFactory::getNewBaseFeature(const char* in_szFeatureName) {
    std::string strFeature;
    StringVector vParams;
    if (!Assertion(splitParams(in_szFeatureName, strFeature, vParams),
                   "splitParams(in_szFeatureName, strFeature, vParams)", c_szSource, __LINE__)) {
        return nullptr;
    }
    const auto type = AudioFeature::parseFeatureType(strFeature.c_str());
    logger().log(LogLevel::Trace, c_szSource, __LINE__, "Looking for feature: ", strFeature);
    if (!type.isValid()) {
        return nullptr;
    }
    const CatalogueEntry& entry = c_featureCatalogue[type.getValue()];
    std::vector<std::uint64_t> values;
    if (entry.build == nullptr || !fits(entry.parameters, vParams) || !parse(vParams, values)) {
        return nullptr;
    }
    return entry.build(values);
}

}  // namespace Zantrix::Audio
