#include "AnnotationDiagnostics.h"
#include "ToneLabel.h"

#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/core/Text.h>

namespace Zantrix::Audio {

namespace {

// No quote closes the label in what `setLabel` reports at ERROR: filters match these records as they are.
constexpr const char* c_szSource = "AudioAmplitudeModulatedAnnotation";
constexpr const char* c_szRegex = "AM_[0-9]*x[0-9]*";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.annotation.AmplitudeModulated");
    return logger;
}

// Compiled once, never destroyed: static destructors may still ask for labels.
const BoostRegex& compiledRegex() {
    static const BoostRegex& regex = *new BoostRegex(c_szRegex);
    return regex;
}

}  // namespace

const char* AmplitudeModulatedAnnotation::getPrefix() {
    return "AM_";
}

void AmplitudeModulatedAnnotationImpl::setCarrierFreq(unsigned frequency) {
    setCarrierFreq_i(frequency);
    refreshLabel();
}

void AmplitudeModulatedAnnotationImpl::setModulatedFreq(unsigned frequency) {
    setModulatedFreq_i(frequency);
    refreshLabel();
}

bool AmplitudeModulatedAnnotationImpl::setLabel(const char* label) {
    if (label == nullptr) {
        return AnnotationImpl::setLabel(label);
    }
    if (!isAMLabel(label)) {
        logger().log(LogLevel::Debug, c_szSource, __LINE__, "Failed to set label: '", label,
                     "'. Amplitude modulated annotation must match the regex: ", c_szRegex);
        return false;
    }
    const auto refuse = [&](const char* missing) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Failed to get ", missing, " from label '", label,
                     "Amplitude modulated annotation must match the regex: ", c_szRegex);
        return false;
    };
    std::istringstream rest = Text::reader(label + 3);
    unsigned frequency = 0;
    if (!(rest >> frequency)) {
        return refuse("carrier frequency");
    }
    // Stored at once: what follows may still fail, and the carrier stays all the same.
    setCarrierFreq_i(frequency);
    char separator = '\0';
    if (!(rest >> separator)) {
        return refuse("'x' between both freq");
    }
    if (!(rest >> frequency)) {
        return refuse("modulated frequency");
    }
    setModulatedFreq_i(frequency);
    return AnnotationImpl::setLabel(label);
}

bool AmplitudeModulatedAnnotationImpl::isAMLabel(const char* label) {
    return matchesToneLabel(label, c_szRegex, compiledRegex, logger(), c_szSource);
}

void AmplitudeModulatedAnnotationImpl::buildLabel(unsigned carrier, unsigned modulating, std::string& out) {
    out = getPrefix() + std::to_string(carrier) + 'x' + std::to_string(modulating);
}

void AmplitudeModulatedAnnotationImpl::refreshLabel() {
    std::string label;
    buildLabel(m_uiCarrierFreq, m_uiModulatedFreq, label);
    AnnotationImpl::setLabel(label.c_str());
}

const char* AmplitudeModulatedAnnotationImpl::s_getRegex() {
    return c_szRegex;
}

const char* AmplitudeModulatedAnnotationImpl::s_getTypeName() {
    return "AmplitudeModulated";
}

AmplitudeModulatedAnnotationImpl* AmplitudeModulatedAnnotationImpl::clone() const {
    return new AmplitudeModulatedAnnotationImpl(*this);
}

}  // namespace Zantrix::Audio
