// What holds for the annotations of both kinds of tones.
#include "AnnotationTesting.h"

#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <murvane/core/Text.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using annotation_test::c_nullLabel;
using annotation_test::live;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecorder;

struct Single {
    using Interface = SingleFrequencyAnnotation;
    using Impl = SingleFrequencyAnnotationImpl;
    static constexpr const char* c_szAccount = "SingleFrequencyAnnotationImpl";
    static constexpr const char* c_szPrefix = "SF_";
    static constexpr const char* c_szRegex = "SF_[0-9]*";
    static constexpr const char* c_szTypeName = "SingleFrequency";
    static constexpr const char* c_szLabel = "SF_0350";
    static constexpr const char* c_szPlainLabel = "SF_350";
    static constexpr const char* c_szNumbers = "350";

    static std::string numbers(const Interface& tone) { return std::to_string(tone.getFrequency()); }
    static void change(Interface& tone) { tone.setFrequency(1); }
};

struct Modulated {
    using Interface = AmplitudeModulatedAnnotation;
    using Impl = AmplitudeModulatedAnnotationImpl;
    static constexpr const char* c_szAccount = "AmplitudeModulatedAnnotationImpl";
    static constexpr const char* c_szPrefix = "AM_";
    static constexpr const char* c_szRegex = "AM_[0-9]*x[0-9]*";
    static constexpr const char* c_szTypeName = "AmplitudeModulated";
    static constexpr const char* c_szLabel = "AM_0900X040";
    static constexpr const char* c_szPlainLabel = "AM_900x40";
    static constexpr const char* c_szNumbers = "900 40";

    static std::string numbers(const Interface& tone) {
        return std::to_string(tone.getCarrierFreq()) + ' ' + std::to_string(tone.getModulatedFreq());
    }
    static void change(Interface& tone) { tone.setCarrierFreq(1); }
};

template <class Kind>
class ToneAnnotation : public testing::Test {
protected:
    using Impl = typename Kind::Impl;

    static Impl tone() {
        Impl tone;
        tone.setStartTime(1.0);
        tone.setStopTime(2.0);
        EXPECT_TRUE(tone.setLabel(Kind::c_szLabel));
        return tone;
    }

    static std::string state(const Impl& tone) {
        std::ostringstream os;
        os << tone << ' ' << Kind::numbers(tone);
        return os.str();
    }

    static std::string stateOfTone() { return std::string(Kind::c_szLabel) + " start=1s stop=2s " + Kind::c_szNumbers; }
};

using Kinds = testing::Types<Single, Modulated>;
TYPED_TEST_SUITE(ToneAnnotation, Kinds);

TYPED_TEST(ToneAnnotation, ANewOneHasFrequenciesOfZeroAndTheLabelOfTheBase) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const typename TypeParam::Impl fresh;
    EXPECT_EQ(TypeParam::numbers(fresh).find_first_not_of("0 "), std::string::npos);
    EXPECT_EQ(fresh.getLabel(), "SF_MIN");
    EXPECT_EQ(fresh.getStartTime(), 0.0);
    EXPECT_EQ(fresh.getStopTime(), 0.0);
    EXPECT_THAT(log.records(), IsEmpty());
}

TYPED_TEST(ToneAnnotation, TellsItsTypeWhicheverInterfaceIsAsked) {
    using Impl = typename TypeParam::Impl;
    EXPECT_STREQ(TypeParam::Interface::getPrefix(), TypeParam::c_szPrefix);
    EXPECT_STREQ(Impl::s_getRegex(), TypeParam::c_szRegex);
    EXPECT_STREQ(Impl::s_getTypeName(), TypeParam::c_szTypeName);
    const Impl tone;
    const AnnotationPrototype& prototype = tone;
    const typename TypeParam::Interface& interface = tone;
    const AnnotationImpl& base = tone;
    EXPECT_STREQ(prototype.getRegex(), TypeParam::c_szRegex);
    EXPECT_STREQ(interface.getRegex(), TypeParam::c_szRegex);
    EXPECT_STREQ(base.getTypeName(), TypeParam::c_szTypeName);
}

TYPED_TEST(ToneAnnotation, ANullLabelIsTheAssertionOfTheBase) {
    auto tone = this->tone();
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(tone.setLabel(nullptr));
    EXPECT_THAT(log.records(), ElementsAre(c_nullLabel));
    EXPECT_EQ(this->state(tone), this->stateOfTone());
}

TYPED_TEST(ToneAnnotation, TakesItsOwnLabel) {
    auto tone = this->tone();
    EXPECT_TRUE(tone.setLabel(tone.getLabel().c_str()));
    EXPECT_EQ(this->state(tone), this->stateOfTone());
    // Too long to be kept inside a string object.
    const std::string label = TypeParam::c_szPrefix + std::string(100, '0') + (TypeParam::c_szLabel + 3);
    EXPECT_TRUE(tone.setLabel(label.c_str()));
    EXPECT_TRUE(tone.setLabel(tone.getLabel().c_str()));
    EXPECT_EQ(tone.getLabel(), label);
    EXPECT_EQ(TypeParam::numbers(tone), TypeParam::c_szNumbers);
}

TYPED_TEST(ToneAnnotation, ComparesLabelsAsTheBaseDoes) {
    const auto tone = this->tone();
    const Annotation& interface = tone;
    EXPECT_TRUE(interface == Text::lowerCase(TypeParam::c_szLabel));
    EXPECT_FALSE(interface == TypeParam::c_szPlainLabel) << "the label counts, not the numbers";
    EXPECT_FALSE(interface == static_cast<const char*>(nullptr));
}

TYPED_TEST(ToneAnnotation, CopiesHaveTheNumbersAndTheLabelAsGiven) {
    const auto original = this->tone();
    const auto copy(original);
    typename TypeParam::Impl assigned;
    EXPECT_EQ(&(assigned = original), &assigned);
    const auto& same = assigned;
    assigned = same;
    EXPECT_EQ(this->state(copy), this->stateOfTone());
    EXPECT_EQ(this->state(assigned), this->stateOfTone());
    TypeParam::change(assigned);
    EXPECT_NE(this->state(assigned), this->stateOfTone());
    EXPECT_EQ(this->state(original), this->stateOfTone());
}

TYPED_TEST(ToneAnnotation, ClonesAreOfTheTypeAndTheirOwn) {
    using Impl = typename TypeParam::Impl;
    const Impl original = this->tone();
    const Cloneable& cloneable = original;
    const std::unique_ptr<Impl> pClone(original.clone());
    const std::unique_ptr<Cloneable> pOther(cloneable.clone());
    EXPECT_EQ(this->state(*pClone), this->stateOfTone());
    const auto* pOtherTone = dynamic_cast<const Impl*>(pOther.get());
    ASSERT_NE(pOtherTone, nullptr);
    EXPECT_EQ(this->state(*pOtherTone), this->stateOfTone());
    TypeParam::change(*pClone);
    pClone->setStartTime(5.0);
    EXPECT_EQ(this->state(original), this->stateOfTone());
}

TYPED_TEST(ToneAnnotation, LivesInTheAccountOfItsImplementation) {
    using Impl = typename TypeParam::Impl;
    const auto others = [] { return live("AnnotationImpl") + live("AmplitudeModulatedAnnotation"); };
    EXPECT_STREQ(Impl::getMemAccountName(), TypeParam::c_szAccount);
    const auto before = live(TypeParam::c_szAccount);
    const auto othersBefore = others();
    Object* const pObject = new Impl;
    Annotation* const pAnnotation = new Impl;
    AnnotationImpl* const pBase = new Impl;
    typename TypeParam::Interface* const pInterface = new Impl;
    Cloneable* const pClone = pBase->clone();
    auto* const pMany = new Impl[2];
    EXPECT_EQ(live(TypeParam::c_szAccount), before + 6);
    EXPECT_EQ(others(), othersBefore);
    delete pObject;
    delete pAnnotation;
    delete pBase;
    delete pInterface;
    delete pClone;
    delete[] pMany;
    EXPECT_EQ(live(TypeParam::c_szAccount), before);
}

}  // namespace
