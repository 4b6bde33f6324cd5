#include <murvane/math/SignalFeatureComposed.h>

#include <memory>
#include <utility>

namespace Zantrix::Math {

namespace {

bool resetIfResettable(SignalFeature& feature) {
    auto* pResettable = dynamic_cast<Resettable*>(&feature);
    return pResettable == nullptr || pResettable->reset();
}

}  // namespace

SignalFeatureComposed::SignalFeatureComposed(SignalFeature* outer, SignalFeature* inner)
    : m_pOuter(outer), m_pInner(inner) {}

bool SignalFeatureComposed::compute(const DoubleVector& in, DoubleVector& out) {
    m_vScratch.clear();
    return m_pInner->compute(in, m_vScratch) && m_pOuter->compute(m_vScratch, out);
}

bool SignalFeatureComposed::reset() {
    const bool outer = resetIfResettable(*m_pOuter);
    const bool inner = resetIfResettable(*m_pInner);
    return outer && inner;
}

Cloneable* SignalFeatureComposed::clone() const {
    auto pCopy = std::make_unique<SignalFeatureComposed>(*this);
    return pCopy->m_pOuter && pCopy->m_pInner ? pCopy.release() : nullptr;
}

SignalFeature* composeFeatures(const StringVector& elements,
                               const std::function<SignalFeature*(const char*)>& newBaseFeature) {
    std::unique_ptr<SignalFeature> pComposed;
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        std::unique_ptr<SignalFeature> pFeature(newBaseFeature(element->c_str()));
        if (pFeature == nullptr) {
            return nullptr;
        }
        if (pComposed != nullptr) {
            // Both are let go once there is memory for what takes them, and it does not fail any more then.
            pFeature.reset(new SignalFeatureComposed(pFeature.release(), pComposed.release()));
        }
        pComposed = std::move(pFeature);
    }
    return pComposed.release();
}

}  // namespace Zantrix::Math
