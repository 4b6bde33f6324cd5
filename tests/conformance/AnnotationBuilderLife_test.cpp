// Expressions and clones that go wrong, copies, accounts, and the builder of the process.
#include "AnnotationBuilderFixture.h"

#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <murvane/core/SingletonRegistry.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace annotation_builder_test;
using annotation_test::live;
using testing::ElementsAre;
using testkit::failedAssertion;
using testkit::LogRecorder;

constexpr const char* c_szSingleton = "AnnotationBuilder::Singleton";

// --- expressions that go wrong ---

TEST(AnnotationBuilder, AnInvalidExpressionGivesNullAndNamesItsType) {
    AnnotationBuilder builder;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(builder.registerPrototype(Prototype("Broken", "SF_("))) << "expressions are read when labels come";
    EXPECT_EQ(builder.getNewAnnotation("SF_440"), nullptr);
    EXPECT_EQ(builder.getNewAnnotation(""), nullptr);
    EXPECT_THAT(log.records(), ElementsAre(badRegex("Broken"), badRegex("Broken")));
}

TEST(AnnotationBuilder, AnInvalidExpressionSpoilsEveryLabelWhereverItStands) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("First", "a.*")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Second", ".*b")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Broken", "[")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Alas", "*")));
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const auto before = live("AnnotationImpl");
    EXPECT_EQ(builder.getNewAnnotation("ab"), nullptr);
    EXPECT_THAT(log.records(), ElementsAre(ambiguous("ab", "First", "a.*", "Second", ".*b"), badRegex("Broken")));
    EXPECT_EQ(live("AnnotationImpl"), before);
}

TEST(AnnotationBuilder, AnExpressionThatTakesForEverGivesNull) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Slow", "(a*)*(a*)*(a*)*(a*)*b")));
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(builder.getNewAnnotation(std::string(200, 'a').c_str()), nullptr);
    EXPECT_THAT(log.take(), ElementsAre(badRegex("Slow")));
    EXPECT_EQ(madeFrom(builder, "aab"), "Slow aab") << "and still works";
}

TEST(AnnotationBuilder, OtherExceptionsOfAPrototypePassThrough) {
    struct Throwing : AnnotationImpl {
        const char* getTypeName() const override { return "Throwing"; }
        bool setLabel(const char*) override { throw std::logic_error("no labels today"); }
        Throwing* clone() const override { return new Throwing(*this); }
    };
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Throwing()));
    const auto before = live("AnnotationImpl");
    EXPECT_THROW(made(builder, "x"), std::logic_error);
    EXPECT_EQ(live("AnnotationImpl"), before) << "nothing leaks";
}

// --- clones that go wrong ---

struct Stranger : virtual Cloneable {
    Stranger* clone() const override { return new Stranger; }
};

/// Clones itself into a stranger once it was cloned often enough, which no `AnnotationImpl` can.
class Changeling : public virtual Annotation {
public:
    explicit Changeling(int faithfulClones) : m_iFaithfulClones(faithfulClones) {}
    const char* getRegex() const override { return "c.*"; }
    const char* getTypeName() const override { return "Changeling"; }
    const std::string& getLabel() const override { return m_strLabel; }
    bool setLabel(const char* label) override {
        m_strLabel = label;
        return true;
    }
    double getStartTime() const override { return 0.0; }
    void setStartTime(double) override {}
    double getStopTime() const override { return 0.0; }
    void setStopTime(double) override {}
    bool isEqual(const char* label) const override { return m_strLabel == label; }
    std::ostream& write(std::ostream& os) const override { return os; }
    Cloneable* clone() const override {
        if (m_iFaithfulClones == 0) {
            return new Stranger;
        }
        return new Changeling(m_iFaithfulClones - 1);
    }

private:
    int m_iFaithfulClones;
    std::string m_strLabel = "changeling";
};

const testkit::LogRecord c_noAnnotation = failedAssertion("(pCloneable == 0) || m_ptr", "CloneableObjPtr");

TEST(AnnotationBuilder, AnAnnotationOfAnyMakeCanBeRegistered) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Changeling(2)));
    EXPECT_EQ(madeFrom(builder, "c1"), "Changeling c1");
}

TEST(AnnotationBuilder, ACloneThatIsNoAnnotationIsAFailedAssertion) {
    AnnotationBuilder builder;
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_FALSE(builder.registerPrototype(Changeling(0)));
    EXPECT_THAT(log.take(), ElementsAre(c_noAnnotation));
    EXPECT_EQ(madeFrom(builder, "c1"), "AnnotationImpl c1") << "nothing was added";
    EXPECT_TRUE(builder.registerPrototype(Changeling(1)));
    log.take();
    EXPECT_EQ(builder.getNewAnnotation("c1"), nullptr);
    EXPECT_THAT(log.take(), ElementsAre(c_noAnnotation));
}

TEST(AnnotationBuilder, APrototypeWithoutACloneIsNotRegistered) {
    struct Unique : Prototype {
        using Prototype::Prototype;
        Unique* clone() const override { return nullptr; }
    };
    AnnotationBuilder builder;
    EXPECT_FALSE(builder.registerPrototype(Unique("Unique", "u")));
    EXPECT_EQ(madeFrom(builder, "u"), "AnnotationImpl u");
}

TEST(AnnotationBuilder, ACopyGoesOnWithoutThePrototypesThatCouldNotBeCloned) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Changeling(1)));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Tone", "t.*")));
    const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    const AnnotationBuilder copy(builder);
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion("aCP.isNull() || m_ptr", "CloneableObjPtr")));
    EXPECT_EQ(madeFrom(copy, "c1"), "AnnotationImpl c1");
    EXPECT_EQ(madeFrom(copy, "t1"), "Tone t1");
}

// --- copies ---

TEST(AnnotationBuilder, CopiesHaveClonesOfThePrototypes) {
    AnnotationBuilder original;
    EXPECT_TRUE(original.registerPrototype(Prototype("Tone", "t.*")));
    const auto prototypes = live("AnnotationImpl");
    {
        AnnotationBuilder copy(original);
        EXPECT_EQ(live("AnnotationImpl"), prototypes + 2) << "the tone and the default";
        EXPECT_TRUE(copy.registerPrototype(Prototype("Other", "o.*")));
        EXPECT_FALSE(copy.registerPrototype(Prototype("Tone", "other")));
        EXPECT_EQ(madeFrom(copy, "t1"), "Tone t1");
        EXPECT_EQ(madeFrom(copy, "o1"), "Other o1");
        EXPECT_EQ(madeFrom(original, "o1"), "AnnotationImpl o1");

        AnnotationBuilder assigned;
        EXPECT_TRUE(assigned.registerPrototype(Prototype("Gone", "t.*")));
        EXPECT_EQ(&(assigned = original), &assigned);
        EXPECT_EQ(madeFrom(assigned, "t1"), "Tone t1");
        EXPECT_TRUE(assigned.registerPrototype(Prototype("Gone", "g")))
            << "what was there before is not there any more";
    }
    EXPECT_EQ(live("AnnotationImpl"), prototypes);
    EXPECT_EQ(madeFrom(original, "t1"), "Tone t1");
}

TEST(AnnotationBuilder, AssignmentToItselfLeavesItAsItIs) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Tone", "t.*")));
    EXPECT_TRUE(builder.registerPrototype(Prototype("Other", "o.*")));
    const auto before = live("AnnotationImpl");
    const AnnotationBuilder& same = builder;
    builder = same;
    EXPECT_EQ(live("AnnotationImpl"), before);
    EXPECT_EQ(madeFrom(builder, "t1"), "Tone t1");
    EXPECT_EQ(madeFrom(builder, "o1"), "Other o1");
    EXPECT_EQ(madeFrom(builder, "x"), "AnnotationImpl x");
}

// --- accounts ---

TEST(AnnotationBuilder, AccountsReturnToWhereTheyWere) {
    const auto before = MemAccount::snapshot();
    EXPECT_STREQ(AnnotationBuilder::getMemAccountName(), "AnnotationBuilder");
    {
        const LogRecorder log;
        const auto builders = live("AnnotationBuilder");
        const auto tones = live("SingleFrequencyAnnotationImpl");
        auto* const pBuilder = new AnnotationBuilder;
        EXPECT_EQ(live("AnnotationBuilder"), builders + 1);
        pBuilder->registerPrototype(SingleFrequencyAnnotationImpl());
        pBuilder->registerPrototype(SingleFrequencyAnnotationImpl());
        pBuilder->registerPrototype(AmplitudeModulatedAnnotationImpl());
        EXPECT_EQ(live("SingleFrequencyAnnotationImpl"), tones + 1);
        for (const char* label : {"SF_440", "sf_440", "AM_1x2", "AM_1x", "SF_", "other", ""}) {
            EXPECT_NE(made(*pBuilder, label), nullptr);
        }
        pBuilder->registerPrototype(Prototype("Broken", "["));
        EXPECT_EQ(made(*pBuilder, "SF_440"), nullptr);
        delete pBuilder;
        auto* const pMany = new AnnotationBuilder[2];
        EXPECT_EQ(live("AnnotationBuilder"), builders + 1);
        delete[] pMany;
        EXPECT_EQ(live("AnnotationBuilder"), builders);
    }
    for (const auto& [account, count] : before) {
        EXPECT_EQ(live(account.c_str()), count) << account;
    }
    for (const char* account : {"SingleFrequencyAnnotationImpl", "AmplitudeModulatedAnnotationImpl"}) {
        EXPECT_EQ(live(account), 0) << account;
    }
}

// --- the builder of the process ---

// What is registered before anything of this program is initialised, but for this.
void* const g_pAtStart = SingletonRegistry::getInstance().find(c_szSingleton);

TEST(AnnotationBuilder, OfTheProcessIsThereFromTheStart) {
    EXPECT_EQ(g_pAtStart, &AnnotationBuilder::getInstance());
    EXPECT_EQ(&AnnotationBuilder::getInstance(), &AnnotationBuilder::getInstance());
    EXPECT_EQ(SingletonRegistry::getInstance().find(c_szSingleton), g_pAtStart);
    EXPECT_GE(live("AnnotationBuilder"), 1);
}

TEST(AnnotationBuilder, OfTheProcessKnowsNoTypeOfItself) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(madeFrom(AnnotationBuilder::getInstance(), "SF_440"), "AnnotationImpl SF_440");
    EXPECT_EQ(madeFrom(AnnotationBuilder::getInstance(), "AM_1x2"), "AnnotationImpl AM_1x2");
    EXPECT_THAT(log.records(), ElementsAre(noSpecialized("SF_440"), created("AnnotationImpl", "SF_440"),
                                           noSpecialized("AM_1x2"), created("AnnotationImpl", "AM_1x2")));
}

TEST(AnnotationBuilderDeathTest, OfTheProcessIsDestroyedAtItsEnd) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct Last : AnnotationImpl {
        ~Last() override {
            if (m_bIsRegistered) {
                std::fprintf(stderr, "destroyed");
            }
        }
        const char* getTypeName() const override { return "Last"; }
        Last* clone() const override {
            auto* const pClone = new Last;
            pClone->m_bIsRegistered = true;
            return pClone;
        }
        bool m_bIsRegistered = false;
    };
    const auto end = [] {
        AnnotationBuilder::getInstance().registerPrototype(Last());
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^destroyed$");
}

}  // namespace
