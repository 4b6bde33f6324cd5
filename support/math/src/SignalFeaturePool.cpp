#include <murvane/math/MathSignalFeatureFactory.h>
#include <murvane/math/SignalFeatureComposed.h>
#include <murvane/math/SignalFeaturePool.h>

#include <algorithm>
#include <cstring>

namespace Zantrix::Math {

SignalFeaturePool::SignalFeaturePool() {
    addFactory(new MathSignalFeatureFactory);
}

bool SignalFeaturePool::addFactory(SignalFeatureFactory* factory) {
    const auto isHeld = [&](const auto& pHeld) { return pHeld.get() == factory; };
    if (factory == nullptr || std::any_of(m_vFactories.begin(), m_vFactories.end(), isHeld)) {
        return false;
    }
    std::unique_ptr<SignalFeatureFactory> pFactory(factory);
    const auto hasSameName = [&](const auto& pHeld) {
        return std::strcmp(pHeld->getFactoryName(), factory->getFactoryName()) == 0;
    };
    if (std::any_of(m_vFactories.begin(), m_vFactories.end(), hasSameName)) {
        return false;
    }
    m_vFactories.push_back(std::move(pFactory));
    return true;
}

SignalFeature* SignalFeaturePool::getNewBaseFeature(const char* name) const {
    for (const auto& pFactory : m_vFactories) {
        if (SignalFeature* pFeature = pFactory->getNewBaseFeature(name)) {
            return pFeature;
        }
    }
    return nullptr;
}

SignalFeature* SignalFeaturePool::getNewFeature(const char* name) const {
    StringVector elements;
    SignalFeatureFactory::splitElements(name, elements);
    return composeFeatures(elements, [this](const char* element) { return getNewBaseFeature(element); });
}

}  // namespace Zantrix::Math
