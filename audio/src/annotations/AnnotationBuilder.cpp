#include "AnnotationDiagnostics.h"

#include <murvane/audio/annotations/AnnotationBuilder.h>
#include <murvane/core/BoostRegex.h>
#include <murvane/core/SingletonRegistry.h>

#include <algorithm>
#include <stdexcept>

namespace Zantrix::Audio {

namespace {

// Made while the library is loaded, so that the builder is there before any caller's code runs.
[[maybe_unused]] const AnnotationBuilder& g_builder = AnnotationBuilder::getInstance();

}  // namespace

AnnotationBuilder& AnnotationBuilder::getInstance() {
    static AnnotationBuilder& builder = []() -> AnnotationBuilder& {
        auto* pOwn = new AnnotationBuilder;
        void* pRegistered = SingletonRegistry::getInstance().registerObject(
            "AnnotationBuilder::Singleton", pOwn, [](void* p) { delete static_cast<AnnotationBuilder*>(p); });
        if (pRegistered != pOwn) {
            delete pOwn;
        }
        return *static_cast<AnnotationBuilder*>(pRegistered);
    }();
    return builder;
}

AnnotationBuilder::AnnotationBuilder() : m_pDefaultPrototype(new AnnotationImpl) {}

bool AnnotationBuilder::registerPrototype(const Annotation& prototype) {
    if (!Assertion(prototype.getTypeName() != nullptr && prototype.getRegex() != nullptr,
                   "prototype.getTypeName() && prototype.getRegex()", c_szAnnotationSource, __LINE__)) {
        return false;
    }
    const std::string typeName = prototype.getTypeName();
    if (typeName == AnnotationImpl::s_getTypeName()) {
        annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__, "AnnotationBuilder automatically use ",
                               AnnotationImpl::s_getTypeName(), " as default prototype.",
                               "No need to add it explicitely");
        return false;
    }
    CloneableObjPtr<Annotation> pClone(prototype.clone());
    if (pClone.isNull()) {
        return false;
    }
    const auto hasName = [&](const Entry& entry) { return entry.first == typeName; };
    if (std::any_of(m_vPrototypes.begin(), m_vPrototypes.end(), hasName)) {
        annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__,
                               "Failed to register prototype of annotation: ", typeName);
        return false;
    }
    m_vPrototypes.emplace_back(typeName, std::move(pClone));
    return true;
}

Annotation* AnnotationBuilder::getNewAnnotation(const char* label) const {
    const std::string strLabel = label == nullptr ? "" : label;
    const Annotation* pPrototype = m_pDefaultPrototype.get();
    const Entry* pExamined = nullptr;
    try {
        const Entry* pChosen = nullptr;
        for (const Entry& entry : m_vPrototypes) {
            pExamined = &entry;
            // Null in a copied builder, whose prototype cloned itself into something else.
            if (entry.second.isNull() || !BoostRegex(entry.second->getRegex()).matches(strLabel)) {
                continue;
            }
            if (pChosen != nullptr) {
                annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                                       "Different registered annotations could be created from label: ", strLabel,
                                       ". Annotations that matches are: ", pChosen->second->getTypeName(),
                                       " with regex '", pChosen->second->getRegex(), "' and ",
                                       entry.second->getTypeName(), " with regex '", entry.second->getRegex(), "'.");
            }
            pChosen = &entry;
        }
        if (pChosen != nullptr) {
            pPrototype = pChosen->second.get();
        } else {
            annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__,
                                   "No specialized annotation type that matche label: ", strLabel,
                                   ". Use base implementation");
        }
    } catch (const std::runtime_error&) {
        annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                               "Unexpected std::runtime exception caught in -annotation with regex: \"",
                               pExamined->first, '"');
        return nullptr;
    }
    CloneableObjPtr<Annotation> pAnnotation(pPrototype->clone());
    if (pAnnotation.isNull()) {
        return nullptr;
    }
    annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__,
                           "AnnotationBuilder created an annotation of type '", pAnnotation->getTypeName(),
                           "' to match label '", strLabel, "'");
    Assertion(pAnnotation->setLabel(strLabel.c_str()), "pAnnotation->setLabel( strLabel.c_str() )",
              c_szAnnotationSource, __LINE__);
    return pAnnotation.release();
}

}  // namespace Zantrix::Audio
