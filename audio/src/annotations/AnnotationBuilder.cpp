#include "AnnotationDiagnostics.h"

#include <murvane/audio/annotations/AnnotationBuilder.h>
#include <murvane/core/SingletonRegistry.h>
#include <murvane/core/Text.h>

#include <algorithm>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace Zantrix::Audio {

namespace {

// Records keep their wording, "explicitely", "matche" and "in -annotation" included: filters match them as they are.

// Made while the library is loaded, so that the builder is there before any caller's code runs.
[[maybe_unused]] const AnnotationBuilder& g_builder = AnnotationBuilder::getInstance();

// Once for all labels. An invalid expression is no matter of the registration: every label that meets it reports it.
std::shared_ptr<const BoostRegex> compiled(const char* expression) {
    try {
        return std::make_shared<const BoostRegex>(expression);
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

// False when the expression is invalid or takes unreasonably long.
bool match(const BoostRegex* pRegex, const std::string& label, bool& isMatch) {
    try {
        isMatch = pRegex != nullptr && pRegex->matches(label);
        return pRegex != nullptr;
    } catch (const std::runtime_error&) {
        return false;
    }
}

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
    const auto hasName = [&](const Entry& entry) { return entry.typeName == typeName; };
    if (std::any_of(m_vPrototypes.begin(), m_vPrototypes.end(), hasName)) {
        annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__,
                               "Failed to register prototype of annotation: ", typeName);
        return false;
    }
    std::shared_ptr<const BoostRegex> pRegex = compiled(pClone->getRegex());
    static_assert(std::is_nothrow_move_constructible_v<Entry>, "or a list that grows would clone its prototypes");
    m_vPrototypes.push_back({typeName, std::move(pClone), std::move(pRegex)});
    return true;
}

Annotation* AnnotationBuilder::getNewAnnotation(const char* label) const {
    const std::string strLabel = Text::orEmpty(label);
    const Annotation* pPrototype = nullptr;
    if (!findPrototype(strLabel, pPrototype)) {
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

// The prototype of the last type that matches, or the default one; false as soon as an expression cannot be used.
bool AnnotationBuilder::findPrototype(const std::string& label, const Annotation*& pPrototype) const {
    pPrototype = nullptr;
    for (const Entry& entry : m_vPrototypes) {
        // Null in a copied builder, whose prototype cloned itself into something else.
        if (entry.pPrototype.isNull()) {
            continue;
        }
        bool isMatch = false;
        if (!match(entry.pRegex.get(), label, isMatch)) {
            annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                                   "Unexpected std::runtime exception caught in -annotation with regex: \"",
                                   entry.typeName, '"');
            return false;
        }
        if (!isMatch) {
            continue;
        }
        if (pPrototype != nullptr) {
            annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                                   "Different registered annotations could be created from label: ", label,
                                   ". Annotations that matches are: ", pPrototype->getTypeName(), " with regex '",
                                   pPrototype->getRegex(), "' and ", entry.pPrototype->getTypeName(), " with regex '",
                                   entry.pPrototype->getRegex(), "'.");
        }
        pPrototype = entry.pPrototype.get();
    }
    if (pPrototype == nullptr) {
        annotationLogger().log(LogLevel::Debug, c_szAnnotationSource, __LINE__,
                               "No specialized annotation type that matche label: ", label,
                               ". Use base implementation");
        pPrototype = m_pDefaultPrototype.get();
    }
    return true;
}

}  // namespace Zantrix::Audio
