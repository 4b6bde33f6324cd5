#pragma once

#include <murvane/math/SignalFeatureFactory.h>

#include <memory>
#include <vector>

namespace Zantrix::Math {

/// Factories side by side: asked for a feature, each is consulted in the order of addition. The mathematics
/// library's own factory is always the first.
class MURVANE_API SignalFeaturePool {
public:
    SignalFeaturePool();

    SignalFeaturePool(const SignalFeaturePool&) = delete;
    SignalFeaturePool& operator=(const SignalFeaturePool&) = delete;

    /// Adds a factory and takes ownership of it, also when it is refused (it is then destroyed at once, unless
    /// the pool already holds this very object).
    ///
    /// @return false for null, and for a factory whose name the pool already has
    bool addFactory(SignalFeatureFactory* factory);

    /// A new feature of one element, from the first factory that builds it; owned by the caller, null if none does.
    SignalFeature* getNewBaseFeature(const char* name) const;

    /// A new feature of a whole name, whose elements may come from different factories; owned by the caller, null
    /// when the name is malformed or no factory builds one of its elements.
    SignalFeature* getNewFeature(const char* name) const;

private:
    std::vector<std::unique_ptr<SignalFeatureFactory>> m_vFactories;
};

}  // namespace Zantrix::Math
