#pragma once

#include <murvane/math/SignalFeatureFactory.h>

namespace Zantrix::Audio {

/// Builds audio features from names such as "SPECTRUM100HZ" or "SPECTRALRANGE(440,20)". Stateless: the same name
/// always gives a new, separate object.
class MURVANE_API AudioFeatureFactory : public Math::SignalFeatureFactory {
public:
    static const char* sGetFactoryName();

    const char* getFactoryName() const override;

    /// A new feature of one element, owned by the caller.
    ///
    /// Null for an unknown name, for types that are constructed directly only, and for a parameter that is not a
    /// number; null after an assertion record for a malformed element and for a wrong number of parameters.
    Math::SignalFeature* getNewBaseFeature(const char* name) override;
};

}  // namespace Zantrix::Audio
