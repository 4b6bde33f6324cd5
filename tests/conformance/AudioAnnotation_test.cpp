#include "AnnotationTesting.h"

#include <murvane/audio/annotations/AudioAnnotation.h>
#include <testkit/LogRecorder.h>
#include <testkit/SpecialNumbers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using annotation_test::c_nullLabel;
using annotation_test::live;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::c_dInfinity;
using testkit::c_dNaN;
using testkit::LogRecorder;

constexpr const char* c_szAccount = "AnnotationImpl";

AnnotationImpl annotation(const char* label, double start = 0.0, double stop = 0.0) {
    AnnotationImpl result;
    EXPECT_TRUE(result.setLabel(label));
    result.setStartTime(start);
    result.setStopTime(stop);
    return result;
}

std::string printed(const Annotation& annotation) {
    std::ostringstream os;
    os << annotation;
    return os.str();
}

TEST(Annotation, ANewOneIsSfMinFromZeroToZero) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const AnnotationImpl fresh;
    EXPECT_EQ(fresh.getLabel(), "SF_MIN");
    EXPECT_EQ(fresh.getStartTime(), 0.0);
    EXPECT_EQ(fresh.getStopTime(), 0.0);
    EXPECT_FALSE(std::signbit(fresh.getStartTime()) || std::signbit(fresh.getStopTime()));
    EXPECT_THAT(log.records(), IsEmpty());
}

// --- label ---

TEST(Annotation, TakesAnyTextAsItsLabel) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    AnnotationImpl annotation;
    const std::string huge(1 << 20, 'x');
    for (const std::string& label : {std::string("SF_440"), std::string(), std::string(" two words \n"),
                                     std::string("caf\xc3\xa9 \xff"), huge, std::string("sf_440")}) {
        EXPECT_TRUE(annotation.setLabel(label.c_str()));
        EXPECT_EQ(annotation.getLabel(), label);
        EXPECT_TRUE(annotation == label);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(Annotation, ANullLabelIsAFailedAssertionAndKeepsTheLabel) {
    AnnotationImpl annotation = ::annotation("SF_440", 1.0, 2.0);
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(annotation.setLabel(nullptr));
    EXPECT_FALSE(annotation.setLabel(nullptr));
    EXPECT_THAT(log.records(), ElementsAre(c_nullLabel, c_nullLabel));
    EXPECT_EQ(printed(annotation), "SF_440 start=1s stop=2s");
}

TEST(Annotation, TakesItsOwnLabelOrAPartOfIt) {
    const std::string text(100, 'l');
    AnnotationImpl annotation = ::annotation(text.c_str());
    EXPECT_TRUE(annotation.setLabel(annotation.getLabel().c_str()));
    EXPECT_EQ(annotation.getLabel(), text);
    EXPECT_TRUE(annotation.setLabel(annotation.getLabel().c_str() + 40));
    EXPECT_EQ(annotation.getLabel(), text.substr(40));
}

TEST(Annotation, LabelsEndAtTheirFirstNul) {
    AnnotationImpl annotation;
    EXPECT_TRUE(annotation.setLabel("AM_1\0x2"));
    EXPECT_EQ(annotation.getLabel(), "AM_1");
    EXPECT_TRUE(annotation == std::string("am_1\0and more", 13));
}

// --- times ---

TEST(Annotation, TimesAreKeptAsGiven) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    AnnotationImpl annotation;
    const double largest = std::numeric_limits<double>::max();
    for (const auto& [start, stop] : {std::pair{2.0, 1.0},
                                      {-1.5, -2.5},
                                      {0.1, 0.1},
                                      {largest, -largest},
                                      {c_dInfinity, -c_dInfinity},
                                      {5e-324, -0.0}}) {
        annotation.setStartTime(start);
        annotation.setStopTime(stop);
        EXPECT_EQ(annotation.getStartTime(), start);
        EXPECT_EQ(annotation.getStopTime(), stop);
    }
    annotation.setStartTime(c_dNaN);
    EXPECT_TRUE(std::isnan(annotation.getStartTime()));
    EXPECT_EQ(annotation.getStopTime(), 0.0) << "one does not touch the other";
    EXPECT_EQ(annotation.getLabel(), "SF_MIN");
    EXPECT_THAT(log.records(), IsEmpty());
}

// --- comparison ---

TEST(Annotation, LabelsAreEqualWhateverTheCaseOfAsciiLetters) {
    const AnnotationImpl annotation = ::annotation("am_1x2");
    for (const char* label : {"AM_1X2", "am_1x2", "Am_1X2"}) {
        EXPECT_TRUE(annotation.isEqual(label)) << label;
        EXPECT_TRUE(annotation == label) << label;
        EXPECT_TRUE(annotation == std::string(label)) << label;
    }
    for (const char* label : {"", "am_1x", "am_1x22", "am-1x2", " am_1x2", "am_1x2 "}) {
        EXPECT_FALSE(annotation.isEqual(label)) << label;
        EXPECT_FALSE(annotation == label) << label;
        EXPECT_FALSE(annotation == std::string(label)) << label;
    }
    EXPECT_FALSE(::annotation("[\\]^_").isEqual("{|}~\x7f")) << "32 apart as well, but no letters";
    EXPECT_FALSE(::annotation("\xc9").isEqual("\xe9"));
    EXPECT_TRUE(::annotation("").isEqual(""));
    EXPECT_FALSE(::annotation("").isEqual("x"));
}

TEST(Annotation, EqualsNoNullLabelAndSaysNothingAboutIt) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(AnnotationImpl().isEqual(nullptr));
    EXPECT_FALSE(::annotation("").isEqual(nullptr));
    EXPECT_FALSE(AnnotationImpl() == static_cast<const char*>(nullptr));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(Annotation, OperatorsAskForTheComparisonOfTheType) {
    struct ByLength : AnnotationImpl {
        bool isEqual(const char* label) const override { return std::string(label).size() == getLabel().size(); }
    };
    const ByLength byLength;
    const Annotation& annotation = byLength;
    EXPECT_TRUE(annotation == "123456");
    EXPECT_TRUE(annotation == std::string("123456"));
    EXPECT_FALSE(annotation == "SF_MIN.");
    EXPECT_FALSE(annotation == std::string("SF_MI"));
}

// --- prototype ---

TEST(Annotation, TheBaseAcceptsEveryLabelAndTellsItsType) {
    EXPECT_STREQ(AnnotationImpl::s_getRegex(), ".*");
    EXPECT_STREQ(AnnotationImpl::s_getTypeName(), "AnnotationImpl");
    const AnnotationImpl base;
    const AnnotationPrototype& prototype = base;
    EXPECT_STREQ(prototype.getRegex(), ".*");
    EXPECT_STREQ(prototype.getTypeName(), "AnnotationImpl");
}

// --- printing ---

TEST(Annotation, PrintsLabelAndTimes) {
    EXPECT_EQ(printed(annotation("SF_440", 1.5, 2.25)), "SF_440 start=1.5s stop=2.25s");
    EXPECT_EQ(printed(annotation("", 1.23456789, 1e9)), " start=1.23457s stop=1e+09s");
    EXPECT_EQ(printed(AnnotationImpl()), "SF_MIN start=0s stop=0s");
    EXPECT_EQ(printed(annotation("x", c_dNaN, -c_dInfinity)), "x start=nans stop=-infs");
}

TEST(Annotation, PrintsWithTheFormattingOfTheStreamAndReturnsIt) {
    const AnnotationImpl annotation = ::annotation("SF_440", 1.5, 2.0 / 3.0);
    std::ostringstream os;
    os << std::fixed << std::setprecision(3);
    EXPECT_EQ(&annotation.write(os), &os);
    EXPECT_EQ(os.str(), "SF_440 start=1.500s stop=0.667s");
    const OutputStreamable& streamable = annotation;
    EXPECT_EQ(&(os << '|' << streamable), &os);
    EXPECT_EQ(os.str(), "SF_440 start=1.500s stop=0.667s|SF_440 start=1.500s stop=0.667s");
}

// --- copies ---

TEST(Annotation, CopiesHaveAllThreeFieldsAndAreTheirOwn) {
    const AnnotationImpl original = annotation("SF_440", 1.0, 2.0);
    AnnotationImpl copy(original);
    AnnotationImpl assigned = annotation("AM_1x2", 3.0, 4.0);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(printed(copy), printed(original));
    EXPECT_EQ(printed(assigned), printed(original));
    copy.setLabel("other");
    copy.setStartTime(7.0);
    assigned.setStopTime(8.0);
    EXPECT_EQ(printed(original), "SF_440 start=1s stop=2s");
    EXPECT_EQ(printed(copy), "other start=7s stop=2s");
    EXPECT_EQ(printed(assigned), "SF_440 start=1s stop=8s");
    const AnnotationImpl& same = assigned;
    assigned = same;
    EXPECT_EQ(printed(assigned), "SF_440 start=1s stop=8s");
}

TEST(Annotation, DerivedTypesCopyTheFieldsOfTheBase) {
    struct Derived : AnnotationImpl {
        void take(const AnnotationImpl& other) { copyFrom(other); }
    };
    Derived derived;
    derived.take(annotation("SF_440", 1.0, 2.0));
    EXPECT_EQ(printed(derived), "SF_440 start=1s stop=2s");
    derived.take(derived);
    EXPECT_EQ(printed(derived), "SF_440 start=1s stop=2s");
}

TEST(Annotation, CloneIsEqualAndItsOwn) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const AnnotationImpl original = annotation("SF_440", 1.0, 2.0);
    const std::unique_ptr<AnnotationImpl> pClone(original.clone());
    EXPECT_TRUE(*pClone == original.getLabel());
    EXPECT_EQ(printed(*pClone), printed(original));
    EXPECT_TRUE(pClone->setLabel("AM_1x2"));
    pClone->setStartTime(8.0);
    pClone->setStopTime(9.0);
    EXPECT_EQ(printed(original), "SF_440 start=1s stop=2s");
    EXPECT_EQ(printed(*pClone), "AM_1x2 start=8s stop=9s");
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(Annotation, CloneThroughAnyBaseIsAWholeAnnotation) {
    const AnnotationImpl original = annotation("SF_440", 1.0, 2.0);
    const Cloneable& cloneable = original;
    const Annotation& interface = original;
    const std::unique_ptr<Cloneable> pFirst(cloneable.clone());
    const std::unique_ptr<Cloneable> pSecond(interface.clone());
    for (const auto* pClone : {pFirst.get(), pSecond.get()}) {
        const auto* pAnnotation = dynamic_cast<const AnnotationImpl*>(pClone);
        ASSERT_NE(pAnnotation, nullptr);
        EXPECT_EQ(printed(*pAnnotation), "SF_440 start=1s stop=2s");
    }
}

// --- accounts ---

TEST(Annotation, LivesInItsAccountWhicheverBaseDeletesIt) {
    EXPECT_STREQ(AnnotationImpl::getMemAccountName(), c_szAccount);
    const auto before = live(c_szAccount);
    Object* const pObject = new AnnotationImpl;
    Cloneable* const pCloneable = new AnnotationImpl;
    OutputStreamable* const pStreamable = new AnnotationImpl;
    AnnotationPrototype* const pPrototype = new AnnotationImpl;
    Annotation* const pAnnotation = new AnnotationImpl;
    AnnotationImpl* const pClone = AnnotationImpl().clone();
    Cloneable* const pOther = pAnnotation->clone();
    EXPECT_EQ(live(c_szAccount), before + 7);
    delete pObject;
    delete pCloneable;
    delete pStreamable;
    delete pPrototype;
    delete pAnnotation;
    delete pClone;
    delete pOther;
    EXPECT_EQ(live(c_szAccount), before);
}

TEST(Annotation, ArraysLiveInTheSameAccountAndObjectsInPlaceInNone) {
    const auto before = live(c_szAccount);
    auto* const pMany = new AnnotationImpl[3];
    EXPECT_EQ(live(c_szAccount), before + 1);
    EXPECT_EQ(pMany[2].getLabel(), "SF_MIN");
    delete[] pMany;
    EXPECT_EQ(live(c_szAccount), before);
    alignas(AnnotationImpl) unsigned char place[sizeof(AnnotationImpl)];
    auto* const pPlaced = new (place) AnnotationImpl;
    EXPECT_EQ(static_cast<void*>(pPlaced), static_cast<void*>(place));
    EXPECT_EQ(live(c_szAccount), before);
    pPlaced->~AnnotationImpl();
}

}  // namespace
