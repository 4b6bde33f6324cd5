#include "annotations/ToneKind.h"

#include "shell/Diagnostics.h"
#include "shell/Text.h"

#include <murvane/audio/annotations/AnnotationBuilder.h>
#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

namespace Zantrix::Cli {

namespace {

// Labels mostly repeat themselves; where they do not, remembering them all is of no use.
constexpr std::size_t c_uiMaxKnown = 10000;

/// Whether a label can be a tone's at all: the builder compiles an expression for each of its types and each label.
bool beginsLikeTone(const std::string& label) {
    static const std::string prefixes[] = {Audio::SingleFrequencyAnnotation::getPrefix(),
                                           Audio::AmplitudeModulatedAnnotation::getPrefix()};
    return std::any_of(std::begin(prefixes), std::end(prefixes), [&](const std::string& prefix) {
        return Text::equalsIgnoringCase(std::string_view(label).substr(0, prefix.size()), prefix);
    });
}

ToneKind ask(const std::string& label) {
    const QuietLog quiet;  // of labels that are no tone, or nearly one
    const std::unique_ptr<Audio::Annotation> pAnnotation(
        Audio::AnnotationBuilder::getInstance().getNewAnnotation(label.c_str()));
    ToneKind kind;
    if (!pAnnotation || pAnnotation->getLabel() != label) {
        return kind;  // such as "sf_440": of the right form, but refused by its type
    }
    if (const auto* pSingle = dynamic_cast<const Audio::SingleFrequencyAnnotation*>(pAnnotation.get())) {
        kind.name = "single frequency";
        kind.frequency = pSingle->getFrequency();
    } else if (const auto* pModulated = dynamic_cast<const Audio::AmplitudeModulatedAnnotation*>(pAnnotation.get())) {
        kind.name = "amplitude modulated";
        kind.carrier = pModulated->getCarrierFreq();
        kind.modulation = pModulated->getModulatedFreq();
    }
    return kind;
}

}  // namespace

ToneKinds::ToneKinds() {
    Audio::AnnotationBuilder& builder = Audio::AnnotationBuilder::getInstance();
    builder.registerPrototype(Audio::SingleFrequencyAnnotationImpl());
    builder.registerPrototype(Audio::AmplitudeModulatedAnnotationImpl());
}

const ToneKind& ToneKinds::of(const std::string& label) {
    static const ToneKind other;
    if (!beginsLikeTone(label)) {
        return other;
    }
    const auto known = m_known.find(label);
    if (known != m_known.end()) {
        return known->second;
    }
    if (m_known.size() == c_uiMaxKnown) {
        m_known.clear();
    }
    return m_known.emplace(label, ask(label)).first->second;
}

}  // namespace Zantrix::Cli
