#include "AnnotationTesting.h"

#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Zantrix::Audio;
using annotation_test::live;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;

LogRecord record(int level, const std::string& message) {
    return {"murvane.audio.annotation.AmplitudeModulated", level, message, "AudioAmplitudeModulatedAnnotation", {}};
}

LogRecord noMatch(const std::string& label) {
    return record(
        log4cplus::DEBUG_LOG_LEVEL,
        "Failed to set label: '" + label + "'. Amplitude modulated annotation must match the regex: AM_[0-9]*x[0-9]*");
}

// The quote is never closed: filters match the text as it always was.
LogRecord missing(const std::string& what, const std::string& label) {
    return record(log4cplus::ERROR_LOG_LEVEL,
                  "Failed to get " + what + " from label '" + label +
                      "Amplitude modulated annotation must match the regex: AM_[0-9]*x[0-9]*");
}

/// A tone with times and a label that a refusal must leave alone.
AmplitudeModulatedAnnotationImpl tone() {
    AmplitudeModulatedAnnotationImpl tone;
    tone.setStartTime(1.0);
    tone.setStopTime(2.0);
    EXPECT_TRUE(tone.setLabel("AM_0900x040"));
    return tone;
}

void expectTone(const AmplitudeModulatedAnnotationImpl& annotation, unsigned carrier = 900) {
    EXPECT_EQ(annotation.getLabel(), "AM_0900x040");
    EXPECT_EQ(annotation.getCarrierFreq(), carrier);
    EXPECT_EQ(annotation.getModulatedFreq(), 40u);
    EXPECT_EQ(annotation.getStartTime(), 1.0);
    EXPECT_EQ(annotation.getStopTime(), 2.0);
}

// --- labels ---

TEST(AmplitudeModulatedAnnotation, ReadsBothFrequenciesAndKeepsTheLabelAsGiven) {
    struct Case {
        const char* label;
        unsigned carrier;
        unsigned modulating;
    };
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    for (const auto& [label, carrier, modulating] :
         {Case{"AM_1000x50", 1000, 50}, Case{"am_1000X50", 1000, 50}, Case{"Am_01000x0050", 1000, 50},
          Case{"AM_0x0", 0, 0}, Case{"AM_4294967295x4294967295", 4294967295U, 4294967295U}}) {
        AmplitudeModulatedAnnotationImpl annotation = tone();
        EXPECT_TRUE(annotation.setLabel(label)) << label;
        EXPECT_EQ(annotation.getCarrierFreq(), carrier) << label;
        EXPECT_EQ(annotation.getModulatedFreq(), modulating) << label;
        EXPECT_EQ(annotation.getLabel(), label);
        EXPECT_EQ(annotation.getStopTime(), 2.0);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(AmplitudeModulatedAnnotation, RefusesALabelThatDoesNotMatchItsExpression) {
    for (const std::string label : {"AM_1000", "AM_1000y50", "AM_1000x50x", "AM_-5x3", "AM_5x-3", "AM_ 5x3", " AM_5x3",
                                    "AM_5x3 ", "AM5x3", "SF_440", "AM", "A", "", "AM_1,000x50"}) {
        AmplitudeModulatedAnnotationImpl annotation = tone();
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_FALSE(annotation.setLabel(label.c_str())) << label;
        EXPECT_THAT(log.records(), ElementsAre(noMatch(label)));
        expectTone(annotation);
    }
}

TEST(AmplitudeModulatedAnnotation, RefusesALabelWithoutACarrierOf32Bits) {
    for (const std::string label : {"AM_x50", "AM_x", "am_X", "AM_4294967296x50", "AM_99999999999999999999999x50"}) {
        AmplitudeModulatedAnnotationImpl annotation = tone();
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_FALSE(annotation.setLabel(label.c_str())) << label;
        EXPECT_THAT(log.records(), ElementsAre(missing("carrier frequency", label)));
        expectTone(annotation);
    }
}

TEST(AmplitudeModulatedAnnotation, KeepsTheCarrierOfALabelWithoutAModulatingFrequencyOf32Bits) {
    for (const std::string label : {"AM_1000x", "am_1000X", "AM_1000x4294967296", "AM_1000x99999999999999999999999"}) {
        AmplitudeModulatedAnnotationImpl annotation = tone();
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_FALSE(annotation.setLabel(label.c_str())) << label;
        EXPECT_THAT(log.records(), ElementsAre(missing("modulated frequency", label)));
        expectTone(annotation, 1000);
        annotation.setModulatedFreq(50);
        EXPECT_EQ(annotation.getLabel(), "AM_1000x50") << "the carrier that stayed";
    }
}

TEST(AmplitudeModulatedAnnotation, ReadsHugeLabels) {
    AmplitudeModulatedAnnotationImpl annotation = tone();
    const std::string zeros(1 << 20, '0');
    EXPECT_TRUE(annotation.setLabel(("AM_" + zeros + "7x" + zeros + "5").c_str()));
    EXPECT_EQ(annotation.getCarrierFreq(), 7u);
    EXPECT_EQ(annotation.getModulatedFreq(), 5u);
    EXPECT_EQ(annotation.getLabel().size(), 2 * zeros.size() + 6);

    annotation = tone();
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const std::string noSeparator = "AM_" + zeros;
    EXPECT_FALSE(annotation.setLabel(noSeparator.c_str()));
    EXPECT_THAT(log.take(), ElementsAre(noMatch(noSeparator)));
    const std::string tooLarge = "AM_" + std::string(1 << 20, '9') + "x1";
    EXPECT_FALSE(annotation.setLabel(tooLarge.c_str()));
    EXPECT_THAT(log.take(), ElementsAre(missing("carrier frequency", tooLarge)));
    expectTone(annotation);
}

TEST(AmplitudeModulatedAnnotation, KnowsTheLabelsOfItsTypeInAnyCase) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    for (const char* label : {"AM_1000x50", "am_1000X50", "AM_x", "AM_1x", "AM_x1"}) {
        EXPECT_TRUE(AmplitudeModulatedAnnotationImpl::isAMLabel(label)) << label;
    }
    for (const char* label : {"AM_1000", "AM_1000x50x", "AM_-1x1", " AM_1x1", "AM_1x1 ", "SF_440", ""}) {
        EXPECT_FALSE(AmplitudeModulatedAnnotationImpl::isAMLabel(label)) << label;
    }
    EXPECT_FALSE(AmplitudeModulatedAnnotationImpl::isAMLabel(nullptr));
    EXPECT_THAT(log.records(), IsEmpty());
}

// --- frequencies ---

TEST(AmplitudeModulatedAnnotation, EachFrequencyMakesTheLabelAnew) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    AmplitudeModulatedAnnotationImpl annotation;
    EXPECT_TRUE(annotation.setLabel("AM_1000x50"));
    AmplitudeModulatedAnnotation& interface = annotation;
    interface.setCarrierFreq(700);
    EXPECT_EQ(annotation.getLabel(), "AM_700x50");
    interface.setModulatedFreq(25);
    EXPECT_EQ(annotation.getLabel(), "AM_700x25");
    EXPECT_EQ(interface.getCarrierFreq(), 700u);
    EXPECT_EQ(interface.getModulatedFreq(), 25u);
    interface.setModulatedFreq(4294967295U);
    interface.setCarrierFreq(0);
    EXPECT_EQ(annotation.getLabel(), "AM_0x4294967295");
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(AmplitudeModulatedAnnotation, BuildsLabelsFromFrequencies) {
    std::string label = "something before";
    AmplitudeModulatedAnnotationImpl::buildLabel(1000, 50, label);
    EXPECT_EQ(label, "AM_1000x50");
    AmplitudeModulatedAnnotationImpl::buildLabel(0, 4294967295U, label);
    EXPECT_EQ(label, "AM_0x4294967295");
}

TEST(AmplitudeModulatedAnnotation, DerivedTypesMayStoreFirstAndLabelLater) {
    struct Derived : AmplitudeModulatedAnnotationImpl {
        void store(unsigned carrier, unsigned modulating) {
            setCarrierFreq_i(carrier);
            setModulatedFreq_i(modulating);
        }
        using AmplitudeModulatedAnnotationImpl::refreshLabel;
    };
    Derived derived;
    derived.store(10, 20);
    EXPECT_EQ(derived.getLabel(), "SF_MIN");
    EXPECT_EQ(derived.getCarrierFreq(), 10u);
    EXPECT_EQ(derived.getModulatedFreq(), 20u);
    derived.refreshLabel();
    EXPECT_EQ(derived.getLabel(), "AM_10x20");
}

// --- accounts ---

TEST(AmplitudeModulatedAnnotation, ItsInterfaceHasAnAccountForOtherImplementations) {
    constexpr const char* c_szAccount = "AmplitudeModulatedAnnotation";
    EXPECT_STREQ(AmplitudeModulatedAnnotation::getMemAccountName(), c_szAccount);
    const auto before = live(c_szAccount);
    void* const pMemory = AmplitudeModulatedAnnotation::operator new(1);
    EXPECT_EQ(live(c_szAccount), before + 1);
    AmplitudeModulatedAnnotation::operator delete(pMemory, 1);
    EXPECT_EQ(live(c_szAccount), before);
}

}  // namespace
