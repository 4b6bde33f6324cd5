#include "AnnotationDiagnostics.h"
#include "ToneLabel.h"

#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <murvane/core/Text.h>

namespace Zantrix::Audio {

namespace {

// No quote closes the label in what `setLabel` reports at ERROR: filters match these records as they are.
constexpr const char* c_szSource = "AudioSingleFrequencyAnnotation";
constexpr const char* c_szRegex = "SF_[0-9]*";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.annotation.SingleFrequency");
    return logger;
}

// Compiled once, never destroyed: static destructors may still ask for labels.
const BoostRegex& compiledRegex() {
    static const BoostRegex& regex = *new BoostRegex(c_szRegex);
    return regex;
}

}  // namespace

const char* SingleFrequencyAnnotation::getPrefix() {
    return "SF_";
}

void SingleFrequencyAnnotationImpl::setFrequency(int frequency) {
    m_iFrequency = frequency;
    AnnotationImpl::setLabel((getPrefix() + std::to_string(frequency)).c_str());
}

bool SingleFrequencyAnnotationImpl::setLabel(const char* label) {
    if (label == nullptr) {
        return AnnotationImpl::setLabel(label);
    }
    const std::string strLabel(label);
    if (strLabel.compare(0, 3, getPrefix()) != 0) {
        logger().log(LogLevel::Debug, c_szSource, __LINE__, "Failed to set label: '", strLabel,
                     "'. Single frequency annotation must match the regex: ", c_szRegex);
        return false;
    }
    std::istringstream rest = Text::reader(strLabel.substr(3));
    int frequency = 0;
    if (!(rest >> frequency)) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Failed to get frequency from label '", strLabel,
                     "Single frequency annotation must match the regex: ", c_szRegex);
        return false;
    }
    setFrequency(frequency);
    // The copy: what was given may have been the label itself, which is another text by now.
    return AnnotationImpl::setLabel(strLabel.c_str());
}

bool SingleFrequencyAnnotationImpl::isSFLabel(const char* label) {
    return matchesToneLabel(label, c_szRegex, compiledRegex, logger(), c_szSource);
}

const char* SingleFrequencyAnnotationImpl::s_getRegex() {
    return c_szRegex;
}

const char* SingleFrequencyAnnotationImpl::s_getTypeName() {
    return "SingleFrequency";
}

SingleFrequencyAnnotationImpl* SingleFrequencyAnnotationImpl::clone() const {
    return new SingleFrequencyAnnotationImpl(*this);
}

}  // namespace Zantrix::Audio
