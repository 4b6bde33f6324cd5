#pragma once

// What the tests of the annotation builder share.
#include "AnnotationTesting.h"

#include <murvane/audio/annotations/AnnotationBuilder.h>

#include <log4cplus/loglevel.h>

#include <memory>
#include <string>

namespace annotation_builder_test {

using Zantrix::Audio::Annotation;
using Zantrix::Audio::AnnotationBuilder;
using Zantrix::Audio::AnnotationImpl;

/// A type whose name and expression a test chooses. Its own label is "prototype".
class Prototype : public AnnotationImpl {
public:
    Prototype(const char* typeName, const char* regex) : m_szTypeName(typeName), m_szRegex(regex) {
        AnnotationImpl::setLabel("prototype");
    }
    const char* getTypeName() const override { return m_szTypeName; }
    const char* getRegex() const override { return m_szRegex; }
    Prototype* clone() const override { return new Prototype(*this); }

private:
    const char* m_szTypeName;
    const char* m_szRegex;
};

/// Its expression accepts labels that it refuses.
class Fastidious : public Prototype {
public:
    using Prototype::Prototype;
    bool setLabel(const char*) override { return false; }
    Fastidious* clone() const override { return new Fastidious(*this); }
};

using Made = std::unique_ptr<Annotation>;

inline Made made(const AnnotationBuilder& builder, const char* label) {
    return Made(builder.getNewAnnotation(label));
}

/// "type label" of what a builder makes for a label; "null" for nothing.
inline std::string madeFrom(const AnnotationBuilder& builder, const char* label) {
    const Made pAnnotation = made(builder, label);
    return pAnnotation == nullptr ? "null" : std::string(pAnnotation->getTypeName()) + ' ' + pAnnotation->getLabel();
}

inline testkit::LogRecord noSpecialized(const std::string& label) {
    return annotation_test::record(log4cplus::DEBUG_LOG_LEVEL, "No specialized annotation type that matche label: " +
                                                                   label + ". Use base implementation");
}

inline testkit::LogRecord created(const std::string& type, const std::string& label) {
    return annotation_test::record(log4cplus::DEBUG_LOG_LEVEL, "AnnotationBuilder created an annotation of type '" +
                                                                   type + "' to match label '" + label + "'");
}

/// Of two types that match.
inline testkit::LogRecord ambiguous(const std::string& label, const std::string& first, const std::string& firstRegex,
                                    const std::string& second, const std::string& secondRegex) {
    return annotation_test::record(log4cplus::ERROR_LOG_LEVEL,
                                   "Different registered annotations could be created from label: " + label +
                                       ". Annotations that matches are: " + first + " with regex '" + firstRegex +
                                       "' and " + second + " with regex '" + secondRegex + "'.");
}

inline testkit::LogRecord badRegex(const std::string& type) {
    return annotation_test::record(
        log4cplus::ERROR_LOG_LEVEL,
        "Unexpected std::runtime exception caught in -annotation with regex: \"" + type + '"');
}

inline const testkit::LogRecord c_refusedLabel =
    testkit::failedAssertion("pAnnotation->setLabel( strLabel.c_str() )", "AudioAnnotation");

}  // namespace annotation_builder_test
