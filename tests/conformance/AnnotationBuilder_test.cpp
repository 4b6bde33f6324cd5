#include "AnnotationBuilderFixture.h"

#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

using namespace Zantrix::Audio;
using namespace annotation_builder_test;
using annotation_test::record;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecorder;

// --- no type registered ---

TEST(AnnotationBuilder, WithoutRegistrationsEveryLabelGivesTheBaseImplementation) {
    const AnnotationBuilder builder;
    for (const std::string label : {"SF_440", "AM_1000x50", "", " ", "AnnotationImpl", "caf\xc3\xa9\n"}) {
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        const Made pAnnotation = made(builder, label.c_str());
        ASSERT_NE(pAnnotation, nullptr);
        const Annotation& annotation = *pAnnotation;
        EXPECT_TRUE(typeid(annotation) == typeid(AnnotationImpl));
        EXPECT_EQ(annotation.getLabel(), label);
        EXPECT_EQ(annotation.getStartTime(), 0.0);
        EXPECT_EQ(annotation.getStopTime(), 0.0);
        EXPECT_THAT(log.records(), ElementsAre(noSpecialized(label), created("AnnotationImpl", label)));
    }
}

TEST(AnnotationBuilder, ANullLabelCountsAsEmpty) {
    const AnnotationBuilder builder;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(madeFrom(builder, nullptr), "AnnotationImpl ");
    EXPECT_THAT(log.records(), ElementsAre(noSpecialized(""), created("AnnotationImpl", "")));
}

TEST(AnnotationBuilder, EveryAnnotationIsANewOne) {
    const AnnotationBuilder builder;
    const Made pFirst = made(builder, "first");
    const Made pSecond = made(builder, "second");
    EXPECT_NE(pFirst, pSecond);
    pSecond->setStartTime(3.0);
    EXPECT_EQ(pFirst->getLabel(), "first");
    EXPECT_EQ(made(builder, "third")->getStartTime(), 0.0) << "prototypes stay as they are";
}

TEST(AnnotationBuilder, AHugeLabelIsALabel) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(SingleFrequencyAnnotationImpl()));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Letters", "[a-z]+")));
    const std::string letters(1 << 20, 'x');
    EXPECT_EQ(madeFrom(builder, letters.c_str()), "Letters " + letters);
    const std::string other = letters + '!';
    EXPECT_EQ(madeFrom(builder, other.c_str()), "AnnotationImpl " + other);
}

// --- registration ---

TEST(AnnotationBuilder, TheBaseImplementationNeedsNoRegistration) {
    AnnotationBuilder builder;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(builder.registerPrototype(AnnotationImpl()));
    EXPECT_FALSE(builder.registerPrototype(Prototype("AnnotationImpl", "x")));
    const auto expected = record(log4cplus::DEBUG_LOG_LEVEL,
                                 "AnnotationBuilder automatically use AnnotationImpl as default prototype.No need to "
                                 "add it explicitely");
    EXPECT_THAT(log.records(), ElementsAre(expected, expected));
    EXPECT_EQ(madeFrom(builder, "x"), "AnnotationImpl x");
    EXPECT_EQ(log.records().at(2), noSpecialized("x")) << "nothing was added";
}

TEST(AnnotationBuilder, TypeNamesDifferByCase) {
    AnnotationBuilder builder;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(builder.registerPrototype(Prototype("annotationimpl", "a")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("ANNOTATIONIMPL", "b")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("", "c")));
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_EQ(madeFrom(builder, "a"), "annotationimpl a");
    EXPECT_EQ(madeFrom(builder, "b"), "ANNOTATIONIMPL b");
    EXPECT_EQ(madeFrom(builder, "c"), " c");
}

TEST(AnnotationBuilder, TheFirstPrototypeOfATypeStays) {
    AnnotationBuilder builder;
    const auto before = annotation_test::live("AnnotationImpl");
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(builder.registerPrototype(Prototype("Tone", "first")));
    EXPECT_FALSE(builder.registerPrototype(Prototype("Tone", "second")));
    EXPECT_FALSE(builder.registerPrototype(Prototype("Tone", "first")));
    const auto expected = record(log4cplus::DEBUG_LOG_LEVEL, "Failed to register prototype of annotation: Tone");
    EXPECT_THAT(log.records(), ElementsAre(expected, expected));
    EXPECT_EQ(annotation_test::live("AnnotationImpl"), before + 1) << "the clones that were refused are gone";
    EXPECT_EQ(madeFrom(builder, "first"), "Tone first");
    EXPECT_EQ(madeFrom(builder, "second"), "AnnotationImpl second");
}

TEST(AnnotationBuilder, KeepsACloneOfItsOwn) {
    AnnotationBuilder builder;
    {
        Prototype prototype("Tone", "tone.*");
        prototype.setStartTime(1.0);
        EXPECT_TRUE(builder.registerPrototype(prototype));
        prototype.setStartTime(2.0);
        EXPECT_EQ(prototype.getLabel(), "prototype") << "the caller's object is left alone";
    }
    const Made pAnnotation = made(builder, "tone 1");
    EXPECT_EQ(pAnnotation->getStartTime(), 1.0) << "a clone of the state at registration";
    EXPECT_EQ(pAnnotation->getLabel(), "tone 1");
}

TEST(AnnotationBuilder, PrototypesWithoutNameOrExpressionAreRefused) {
    AnnotationBuilder builder;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(builder.registerPrototype(Prototype(nullptr, ".*")));
    EXPECT_FALSE(builder.registerPrototype(Prototype("Tone", nullptr)));
    const auto expected =
        testkit::failedAssertion("prototype.getTypeName() && prototype.getRegex()", "AudioAnnotation");
    EXPECT_THAT(log.records(), ElementsAre(expected, expected));
    EXPECT_EQ(madeFrom(builder, "x"), "AnnotationImpl x");
}

// --- labels ---

TEST(AnnotationBuilder, TheTonesFindTheirTypes) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(SingleFrequencyAnnotationImpl()));
    EXPECT_TRUE(builder.registerPrototype(AmplitudeModulatedAnnotationImpl()));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);

    const Made pSingle = made(builder, "SF_440");
    const auto* pFrequency = dynamic_cast<SingleFrequencyAnnotation*>(pSingle.get());
    ASSERT_NE(pFrequency, nullptr);
    EXPECT_EQ(pFrequency->getFrequency(), 440);
    EXPECT_EQ(pSingle->getLabel(), "SF_440");
    EXPECT_THAT(log.take(), ElementsAre(created("SingleFrequency", "SF_440")));

    for (const char* label : {"am_1000x50", "AM_1000x50", "AM_1000X50"}) {
        const Made pModulated = made(builder, label);
        const auto* pFrequencies = dynamic_cast<AmplitudeModulatedAnnotation*>(pModulated.get());
        ASSERT_NE(pFrequencies, nullptr);
        EXPECT_EQ(pFrequencies->getCarrierFreq(), 1000u);
        EXPECT_EQ(pFrequencies->getModulatedFreq(), 50u);
        EXPECT_EQ(pModulated->getLabel(), label);
        EXPECT_THAT(log.take(), ElementsAre(created("AmplitudeModulated", label)));
    }
    EXPECT_EQ(madeFrom(builder, "SF_440x"), "AnnotationImpl SF_440x");
    EXPECT_THAT(log.take(), ElementsAre(noSpecialized("SF_440x"), created("AnnotationImpl", "SF_440x")));
}

TEST(AnnotationBuilder, ALabelThatItsTypeRefusesIsAFailedAssertionAndKeepsThePrototypesLabel) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(SingleFrequencyAnnotationImpl()));
    EXPECT_TRUE(builder.registerPrototype(Fastidious("Fastidious", "f.*")));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const testkit::LogRecord refusal = {"murvane.audio.annotation.SingleFrequency",
                                        log4cplus::DEBUG_LOG_LEVEL,
                                        "Failed to set label: 'sf_440'. Single frequency annotation must match the "
                                        "regex: SF_[0-9]*",
                                        "AudioSingleFrequencyAnnotation",
                                        {}};
    EXPECT_EQ(madeFrom(builder, "sf_440"), "SingleFrequency SF_MIN");
    EXPECT_THAT(log.take(), ElementsAre(created("SingleFrequency", "sf_440"), refusal, c_refusedLabel));
    EXPECT_EQ(madeFrom(builder, "fail"), "Fastidious prototype");
    EXPECT_THAT(log.take(), ElementsAre(created("Fastidious", "fail"), c_refusedLabel));
}

TEST(AnnotationBuilder, ExpressionsMatchWholeLabelsInAnyCase) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Ring", "ring(back)?[0-9]{1,2}")));
    for (const char* label : {"ring1", "RINGBACK42", "RingBack9"}) {
        EXPECT_EQ(madeFrom(builder, label), std::string("Ring ") + label);
    }
    for (const char* label : {"ring", "ring100", " ring1", "ring1 ", "xring1", "ring1\n", ""}) {
        EXPECT_EQ(madeFrom(builder, label), std::string("AnnotationImpl ") + label);
    }
}

TEST(AnnotationBuilder, AnExpressionMayMatchTheEmptyLabel) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Empty", "")));
    EXPECT_EQ(madeFrom(builder, ""), "Empty ");
    EXPECT_EQ(madeFrom(builder, nullptr), "Empty ");
    EXPECT_EQ(madeFrom(builder, "x"), "AnnotationImpl x");
}

TEST(AnnotationBuilder, OfSeveralTypesThatMatchTheLastRegisteredIsMade) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Zebra", "a.*")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Other", "b")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Ant", ".*b")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Mouse", "ab")));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(madeFrom(builder, "ac"), "Zebra ac");
    EXPECT_THAT(log.take(), ElementsAre(created("Zebra", "ac")));
    EXPECT_EQ(madeFrom(builder, "b"), "Ant b");
    EXPECT_THAT(log.take(), ElementsAre(ambiguous("b", "Other", "b", "Ant", ".*b"), created("Ant", "b")));
    EXPECT_EQ(madeFrom(builder, "AB"), "Mouse AB");
    EXPECT_THAT(log.take(), ElementsAre(ambiguous("AB", "Zebra", "a.*", "Ant", ".*b"),
                                        ambiguous("AB", "Ant", ".*b", "Mouse", "ab"), created("Mouse", "AB")));
}

TEST(AnnotationBuilder, SaysOnlyWhatIsEnabled) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("One", "x.*")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Two", ".*x")));
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(builder.registerPrototype(AnnotationImpl()));
    EXPECT_FALSE(builder.registerPrototype(Prototype("One", "y")));
    EXPECT_EQ(madeFrom(builder, "y"), "AnnotationImpl y");
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_EQ(madeFrom(builder, "x"), "Two x");
    EXPECT_THAT(log.records(), ElementsAre(ambiguous("x", "One", "x.*", "Two", ".*x")));
}

// --- threads ---

TEST(AnnotationBuilder, ServesSeveralThreadsOnceTypesAreRegistered) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(SingleFrequencyAnnotationImpl()));
    EXPECT_TRUE(builder.registerPrototype(AmplitudeModulatedAnnotationImpl()));
    std::vector<std::thread> threads;
    std::vector<int> counts(4, 0);
    for (int& count : counts) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                const std::string label = i % 2 == 0 ? "SF_" + std::to_string(i) : "AM_" + std::to_string(i) + "x2";
                count += made(builder, label.c_str())->getLabel() == label ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(counts, testing::Each(200));
}

}  // namespace
