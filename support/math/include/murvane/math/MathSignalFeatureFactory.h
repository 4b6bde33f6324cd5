#pragma once

#include <murvane/math/SignalFeatureFactory.h>

namespace Zantrix::Math {

/// Builds the mathematics library's own features: AMPLITUDE, MEAN, TEMPORALMEAN, SLIDINGWINDOW(length) and
/// RANGE(start,length). Stateless.
class MURVANE_API MathSignalFeatureFactory : public SignalFeatureFactory {
public:
    static const char* sGetFactoryName() { return "MathSignalFeatureFactory"; }

    const char* getFactoryName() const override;

    /// Null for an unknown base, a wrong number of parameters, or a parameter that is not a whole number.
    SignalFeature* getNewBaseFeature(const char* name) override;
};

}  // namespace Zantrix::Math
