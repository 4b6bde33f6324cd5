#pragma once

#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeature.h>

#include <functional>

namespace Zantrix::Math {

/// A feature of a feature: the outer one sees the values of the inner one.
class MURVANE_API SignalFeatureComposed : public virtual SignalFeatureWithMemory {
public:
    /// Takes ownership of both; neither may be null.
    SignalFeatureComposed(SignalFeature* outer, SignalFeature* inner);

    /// Appends the outer feature's values; false when either feature fails.
    bool compute(const DoubleVector& in, DoubleVector& out) override;

    /// Resets whichever of the two has a memory; true unless one of them could not.
    bool reset() override;

    /// A copy with clones of both features, memories included; null, after an assertion record, when one of them
    /// cannot be cloned.
    Cloneable* clone() const override;

private:
    CloneableObjPtr<SignalFeature> m_pOuter;
    CloneableObjPtr<SignalFeature> m_pInner;
    DoubleVector m_vScratch;  // the inner feature's values, storage kept between calls
};

/// Composes one feature of a list of elements: the last sees the input, each other one the values of the next.
///
/// @param newBaseFeature  makes the feature of one element, or null
/// @return a new feature, owned by the caller; null for an empty list and as soon as one element gives null
MURVANE_API SignalFeature* composeFeatures(const StringVector& elements,
                                           const std::function<SignalFeature*(const char*)>& newBaseFeature);

}  // namespace Zantrix::Math
