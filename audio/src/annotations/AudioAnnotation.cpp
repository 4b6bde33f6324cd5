#include "AnnotationDiagnostics.h"

#include <murvane/audio/annotations/AudioAnnotation.h>
#include <murvane/core/Text.h>

#include <ostream>

namespace Zantrix::Audio {

const Logger& annotationLogger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.annotation");
    return logger;
}

// The virtual bases carry no state, so that copying is copying the three fields.
AnnotationImpl::AnnotationImpl(const AnnotationImpl& other)
    : Object(), Cloneable(), AnnotationPrototype(), OutputStreamable(), Annotation() {
    copyFrom(other);
}

AnnotationImpl& AnnotationImpl::operator=(const AnnotationImpl& other) {
    copyFrom(other);
    return *this;
}

void AnnotationImpl::copyFrom(const AnnotationImpl& other) {
    m_strLabel = other.m_strLabel;
    m_dStartTime = other.m_dStartTime;
    m_dStopTime = other.m_dStopTime;
}

bool AnnotationImpl::setLabel(const char* in_szLabel) {
    if (!Assertion(in_szLabel != nullptr, "in_szLabel", c_szAnnotationSource, __LINE__)) {
        return false;
    }
    m_strLabel = in_szLabel;
    return true;
}

bool AnnotationImpl::isEqual(const char* label) const {
    return label != nullptr && Text::equalsIgnoringCase(m_strLabel, label);
}

const char* AnnotationImpl::s_getRegex() {
    return ".*";
}

const char* AnnotationImpl::s_getTypeName() {
    return "AnnotationImpl";
}

std::ostream& AnnotationImpl::write(std::ostream& os) const {
    return os << m_strLabel << " start=" << m_dStartTime << "s stop=" << m_dStopTime << 's';
}

AnnotationImpl* AnnotationImpl::clone() const {
    return new AnnotationImpl(*this);
}

}  // namespace Zantrix::Audio
