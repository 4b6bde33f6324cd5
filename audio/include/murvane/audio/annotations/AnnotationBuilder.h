#pragma once

#include <murvane/audio/annotations/AudioAnnotation.h>
#include <murvane/core/BoostRegex.h>
#include <murvane/core/CloneableObjPtr.h>

#include <memory>
#include <string>
#include <vector>

namespace Zantrix::Audio {

/// Makes annotations of the right type from their labels alone: keeps one prototype of each registered type, clones the
/// one whose expression matches the whole label, and falls back on `AnnotationImpl`.
///
/// The library registers no type by itself. Types are registered before threads make annotations; making them only
/// reads.
class MURVANE_API AnnotationBuilder : public virtual Object {
public:
    MURVANE_MEM_ACCOUNT("AnnotationBuilder")

    /// The builder of the process, there from the moment the library is loaded; registered in the `SingletonRegistry`
    /// as "AnnotationBuilder::Singleton".
    static AnnotationBuilder& getInstance();

    /// A builder of one's own, with no type registered. A copy clones the prototypes.
    AnnotationBuilder();

    /// Adds a clone of a prototype under its type name; the caller keeps its own object.
    ///
    /// @return false, after a DEBUG record, for "AnnotationImpl", which is always there, and for a type name that is
    ///         taken; false, after a failed assertion, without type name or expression, and for a clone that is no
    ///         `Annotation`
    bool registerPrototype(const Annotation& prototype);

    /// A new annotation with that label, null counting as empty, owned by the caller. Of several types that match,
    /// which is reported at ERROR, the one registered last is made. A type that refuses the label after all is reported
    /// as a failed assertion, and its annotation returned with its own label.
    ///
    /// @return null, after an ERROR record, when a registered expression is invalid or takes unreasonably long; null,
    ///         after a failed assertion, for a clone that is no `Annotation`
    Annotation* getNewAnnotation(const char* label) const;

private:
    struct Entry {
        std::string typeName;
        CloneableObjPtr<Annotation> pPrototype;
        std::shared_ptr<const BoostRegex> pRegex;  // null: its expression is invalid
    };

    bool findPrototype(const std::string& label, const Annotation*& pPrototype) const;

    std::vector<Entry> m_vPrototypes;  // in order of registration
    CloneableObjPtr<Annotation> m_pDefaultPrototype;
};

}  // namespace Zantrix::Audio
