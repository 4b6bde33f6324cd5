#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace {

using namespace Zantrix::Audio;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;

LogRecord record(int level, const std::string& message) {
    return {"murvane.audio.annotation.SingleFrequency", level, message, "AudioSingleFrequencyAnnotation", {}};
}

LogRecord noPrefix(const std::string& label) {
    return record(log4cplus::DEBUG_LOG_LEVEL,
                  "Failed to set label: '" + label + "'. Single frequency annotation must match the regex: SF_[0-9]*");
}

// The quote is never closed: filters match the text as it always was.
LogRecord noFrequency(const std::string& label) {
    return record(log4cplus::ERROR_LOG_LEVEL, "Failed to get frequency from label '" + label +
                                                  "Single frequency annotation must match the regex: SF_[0-9]*");
}

/// A tone with times and a label that a refusal must leave alone.
SingleFrequencyAnnotationImpl tone() {
    SingleFrequencyAnnotationImpl tone;
    tone.setStartTime(1.0);
    tone.setStopTime(2.0);
    EXPECT_TRUE(tone.setLabel("SF_0350"));
    return tone;
}

void expectUnchanged(const SingleFrequencyAnnotationImpl& annotation) {
    EXPECT_EQ(annotation.getLabel(), "SF_0350");
    EXPECT_EQ(annotation.getFrequency(), 350);
    EXPECT_EQ(annotation.getStartTime(), 1.0);
    EXPECT_EQ(annotation.getStopTime(), 2.0);
}

// --- labels ---

TEST(SingleFrequencyAnnotation, ReadsTheFrequencyAndKeepsTheLabelAsGiven) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    for (const auto& [label, frequency] : {std::pair{"SF_440", 440},
                                           {"SF_0440", 440},
                                           {"SF_0", 0},
                                           {"SF_-5", -5},
                                           {"SF_+5", 5},
                                           {"SF_440abc", 440},
                                           {"SF_ \t\n440", 440},
                                           {"SF_440.7", 440},
                                           {"SF_1,000", 1},
                                           {"SF_1e3", 1},
                                           {"SF_0x1F", 0},
                                           {"SF_-0", 0},
                                           {"SF_2147483647", 2147483647},
                                           {"SF_-2147483648", std::numeric_limits<int>::min()}}) {
        SingleFrequencyAnnotationImpl annotation = tone();
        EXPECT_TRUE(annotation.setLabel(label)) << label;
        EXPECT_EQ(annotation.getFrequency(), frequency) << label;
        EXPECT_EQ(annotation.getLabel(), label);
        EXPECT_EQ(annotation.getStartTime(), 1.0);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(SingleFrequencyAnnotation, RefusesALabelThatDoesNotBeginWithThePrefixExactly) {
    for (const std::string label : {"sf_440", "Sf_440", "XF_440", "SF440", "SF", "S", "", " SF_440", "AM_1x2"}) {
        SingleFrequencyAnnotationImpl annotation = tone();
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_FALSE(annotation.setLabel(label.c_str())) << label;
        EXPECT_THAT(log.records(), ElementsAre(noPrefix(label)));
        expectUnchanged(annotation);
    }
}

TEST(SingleFrequencyAnnotation, RefusesALabelWithoutANumberOf32Bits) {
    for (const std::string label : {"SF_", "SF_abc", "SF_-", "SF_ ", "SF_x440", "SF_2147483648", "SF_-2147483649",
                                    "SF_99999999999999999999999999", "SF_.5", "SF_MIN"}) {
        SingleFrequencyAnnotationImpl annotation = tone();
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_FALSE(annotation.setLabel(label.c_str())) << label;
        EXPECT_THAT(log.records(), ElementsAre(noFrequency(label)));
        expectUnchanged(annotation);
    }
}

TEST(SingleFrequencyAnnotation, ReadsHugeLabels) {
    SingleFrequencyAnnotationImpl annotation = tone();
    const std::string zeros(1 << 20, '0');
    EXPECT_TRUE(annotation.setLabel(("SF_" + zeros + "440").c_str()));
    EXPECT_EQ(annotation.getFrequency(), 440);
    EXPECT_EQ(annotation.getLabel().size(), zeros.size() + 6);
    EXPECT_TRUE(annotation.setLabel(("SF_7" + std::string(1 << 20, 'x')).c_str()));
    EXPECT_EQ(annotation.getFrequency(), 7);

    annotation = tone();
    const std::string nines = "SF_" + std::string(1 << 20, '9');
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(annotation.setLabel(nines.c_str()));
    EXPECT_THAT(log.records(), ElementsAre(noFrequency(nines)));
    expectUnchanged(annotation);
}

TEST(SingleFrequencyAnnotation, ALabelIsSetThroughTheFrequencyOfTheType) {
    struct Rounded : SingleFrequencyAnnotationImpl {
        void setFrequency(int frequency) override { SingleFrequencyAnnotationImpl::setFrequency(frequency / 10 * 10); }
    };
    Rounded rounded;
    EXPECT_TRUE(rounded.setLabel("SF_447"));
    EXPECT_EQ(rounded.getFrequency(), 440);
    EXPECT_EQ(rounded.getLabel(), "SF_447");
}

TEST(SingleFrequencyAnnotation, KnowsTheLabelsOfItsTypeInAnyCase) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    for (const char* label : {"SF_440", "sf_440", "Sf_0", "SF_", "SF_00000000000000000000"}) {
        EXPECT_TRUE(SingleFrequencyAnnotationImpl::isSFLabel(label)) << label;
    }
    for (const char* label : {"SF_440x", "SF_-5", "SF_ 440", " SF_440", "SF_440 ", "SF440", "XF_440", "", "SF_4.0"}) {
        EXPECT_FALSE(SingleFrequencyAnnotationImpl::isSFLabel(label)) << label;
    }
    EXPECT_FALSE(SingleFrequencyAnnotationImpl::isSFLabel(nullptr));
    EXPECT_TRUE(SingleFrequencyAnnotationImpl::isSFLabel(("sf_" + std::string(1 << 20, '9')).c_str()));
    EXPECT_FALSE(SingleFrequencyAnnotationImpl::isSFLabel(("SF_" + std::string(1 << 20, '9') + 'x').c_str()));
    EXPECT_THAT(log.records(), IsEmpty());
}

// --- frequency ---

TEST(SingleFrequencyAnnotation, AFrequencyMakesTheLabel) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    SingleFrequencyAnnotationImpl annotation = tone();
    SingleFrequencyAnnotation& interface = annotation;
    for (const auto& [frequency, label] : {std::pair{440, "SF_440"},
                                           {-3, "SF_-3"},
                                           {0, "SF_0"},
                                           {2147483647, "SF_2147483647"},
                                           {std::numeric_limits<int>::min(), "SF_-2147483648"}}) {
        interface.setFrequency(frequency);
        EXPECT_EQ(interface.getFrequency(), frequency);
        EXPECT_EQ(annotation.getLabel(), label);
    }
    EXPECT_EQ(annotation.getStopTime(), 2.0);
    EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
