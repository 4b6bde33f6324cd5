#include <murvane/core/Text.h>
#include <murvane/math/BasicFeatures.h>
#include <murvane/math/MathSignalFeatureFactory.h>
#include <murvane/math/RangeFeature.h>

#include <array>
#include <cstddef>

namespace Zantrix::Math {

namespace {

using Parameters = std::array<std::size_t, 2>;

struct Entry {
    const char* name;
    std::size_t parameterCount;
    SignalFeature* (*build)(const Parameters&);
};

constexpr std::array<Entry, 5> c_entries = {{
    {"AMPLITUDE", 0, [](const Parameters&) -> SignalFeature* { return new AmplitudeFeature; }},
    {"MEAN", 0, [](const Parameters&) -> SignalFeature* { return new MeanFeature; }},
    {"TEMPORALMEAN", 0, [](const Parameters&) -> SignalFeature* { return new TemporalMeanFeature; }},
    {"SLIDINGWINDOW", 1, [](const Parameters& p) -> SignalFeature* { return new SlidingWindowFeature(p[0]); }},
    {"RANGE", 2, [](const Parameters& p) -> SignalFeature* { return new RangeFeature(p[0], p[1]); }},
}};

}  // namespace

const char* MathSignalFeatureFactory::getFactoryName() const {
    return sGetFactoryName();
}

SignalFeature* MathSignalFeatureFactory::getNewBaseFeature(const char* name) {
    std::string base;
    StringVector params;
    if (!splitParams(name, base, params)) {
        return nullptr;
    }
    for (const Entry& entry : c_entries) {
        if (!Text::equalsIgnoringCase(entry.name, base)) {
            continue;
        }
        if (params.size() != entry.parameterCount) {
            return nullptr;
        }
        Parameters values{};
        for (std::size_t i = 0; i < params.size(); ++i) {
            if (!Text::parseWhole(params[i], values[i])) {
                return nullptr;
            }
        }
        return entry.build(values);
    }
    return nullptr;
}

}  // namespace Zantrix::Math
