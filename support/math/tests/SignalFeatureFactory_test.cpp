#include <murvane/core/MemAccount.h>
#include <murvane/math/MathSignalFeatureFactory.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>

using namespace Zantrix;
using namespace Zantrix::Math;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

struct Element {
    std::string name;
    std::string base;
    StringVector params;
};

TEST(SignalFeatureFactory, SplitsAnElementIntoItsBaseAndItsParameters) {
    const Element elements[] = {
        {"SPECTRUM", "SPECTRUM", {}},
        {"spectrum100Hz", "spectrum100Hz", {}},
        {"X()", "X", {}},
        {"X( )", "X", {}},
        {"X(1)", "X", {"1"}},
        {"SPECTRALRANGE(440,20)", "SPECTRALRANGE", {"440", "20"}},
        {"X( 440 ,\t20  )", "X", {"440", "20"}},
        {"X(a b,c)", "X", {"a b", "c"}},
        {"X(100x,-5,3.5)", "X", {"100x", "-5", "3.5"}},
        {"X(a_b)", "X", {"a_b"}},
        {"X_Y", "X_Y", {}},
        {"A_B_C(1)", "A_B_C", {"1"}},
        {"a-b c.d=e", "a-b c.d=e", {}},
        {" X ", " X ", {}},
        {"\xC3\xA9t\xC3\xA9", "\xC3\xA9t\xC3\xA9", {}},
    };
    for (const Element& element : elements) {
        std::string base = "left over";
        StringVector params{"left over"};
        EXPECT_TRUE(SignalFeatureFactory::splitParams(element.name.c_str(), base, params)) << element.name;
        EXPECT_EQ(base, element.base) << element.name;
        EXPECT_EQ(params, element.params) << element.name;
    }
}

TEST(SignalFeatureFactory, RefusesAMalformedElementAndEmptiesTheOutputs) {
    for (const char* name : {static_cast<const char*>(nullptr),
                             "",
                             "_",
                             "_X",
                             "X_",
                             "__",
                             "X__Y",
                             "X_(1)",
                             "X__Y(1)",
                             "(",
                             ")",
                             "()",
                             "(1)",
                             ",",
                             "X,",
                             "X,Y",
                             "X(",
                             "X(1",
                             "X)",
                             "X1)",
                             "X(1))",
                             "X((1)",
                             "X((1))",
                             "X(1)(2)",
                             "X)1(",
                             "X(1)Y",
                             "X(1) ",
                             "X()2",
                             "X(,)",
                             "X(1,)",
                             "X(,1)",
                             "X(1,,2)",
                             "X(1, ,2)",
                             "X(1)_Y",
                             "X()_"}) {
        std::string base = "left over";
        StringVector params{"left over"};
        EXPECT_FALSE(SignalFeatureFactory::splitParams(name, base, params)) << (name == nullptr ? "null" : name);
        EXPECT_EQ(base, "") << (name == nullptr ? "null" : name);
        EXPECT_THAT(params, IsEmpty()) << (name == nullptr ? "null" : name);
    }
}

TEST(SignalFeatureFactory, SplitsANameIntoItsElementsFromLeftToRight) {
    StringVector elements{"left over"};
    EXPECT_TRUE(SignalFeatureFactory::splitElements("TemporalMean_Mean_Amplitude", elements));
    EXPECT_THAT(elements, ElementsAre("TemporalMean", "Mean", "Amplitude"));
    EXPECT_TRUE(SignalFeatureFactory::splitElements("SPECTRUM", elements));
    EXPECT_THAT(elements, ElementsAre("SPECTRUM"));
    EXPECT_TRUE(SignalFeatureFactory::splitElements("MAXSPECTRALRANGES(350, 440)_SPECTRUM()", elements));
    EXPECT_THAT(elements, ElementsAre("MAXSPECTRALRANGES(350, 440)", "SPECTRUM()"));
    EXPECT_TRUE(SignalFeatureFactory::splitElements("X(a_b)_Y", elements));
    EXPECT_THAT(elements, ElementsAre("X(a_b)", "Y"));
}

TEST(SignalFeatureFactory, RefusesANameWithAMalformedElement) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "_", "_X", "X_", "X__Y", "X_Y_", "X_(1)", "X_Y(",
                             "X)_Y", "X)_(Y", "X(_Y", "X(1)2_Y", "X_Y(1,)", "X,Y_Z", "X(a_b", "X(1))_Y(1"}) {
        StringVector elements{"left over"};
        EXPECT_FALSE(SignalFeatureFactory::splitElements(name, elements)) << (name == nullptr ? "null" : name);
        EXPECT_THAT(elements, IsEmpty()) << (name == nullptr ? "null" : name);
    }
}

TEST(SignalFeatureFactory, RefusesANameOfMoreElementsThanFeaturesMayNest) {
    MathSignalFeatureFactory factory;
    std::string name = "AMPLITUDE";
    for (std::size_t i = 1; i < SignalFeatureFactory::c_uiMaxElements; ++i) {
        name += "_AMPLITUDE";
    }
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewFeature(name.c_str()));
    ASSERT_NE(pFeature, nullptr);
    DoubleVector out;
    EXPECT_TRUE(pFeature->compute({3.0}, out));
    EXPECT_THAT(out, ElementsAre(3.0));
    StringVector elements;
    EXPECT_FALSE(SignalFeatureFactory::splitElements((name + "_AMPLITUDE").c_str(), elements));
    EXPECT_THAT(elements, IsEmpty());
    for (int doubling = 0; doubling < 12; ++doubling) {
        name += '_' + name;
    }
    EXPECT_EQ(factory.getNewFeature(name.c_str()), nullptr);
}

TEST(SignalFeatureFactory, ComposesAWholeNameWithinItself) {
    MathSignalFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewFeature("SlidingWindow(2)_Mean_Range(1,2)"));
    ASSERT_NE(pFeature, nullptr);
    DoubleVector out{9.0};
    EXPECT_TRUE(pFeature->compute({100.0, 1.0, 3.0}, out));
    EXPECT_TRUE(pFeature->compute({100.0, 5.0, 7.0}, out));
    EXPECT_TRUE(pFeature->compute({100.0, 0.0, 1.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 2.0, 2.0, 6.0, 6.0, 0.5));
    EXPECT_NE(dynamic_cast<SignalFeatureWithMemory*>(pFeature.get()), nullptr);
}

TEST(SignalFeatureFactory, ASingleElementIsTheFeatureItself) {
    MathSignalFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewFeature("mean"));
    ASSERT_NE(pFeature, nullptr);
    EXPECT_EQ(dynamic_cast<SignalFeatureWithMemory*>(pFeature.get()), nullptr);
}

TEST(SignalFeatureFactory, GivesNullForANameItCannotBuildWhole) {
    const testkit::LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    MathSignalFeatureFactory factory;
    for (const char* name : {static_cast<const char*>(nullptr), "", "MEAN_", "MEAN_NOSUCH", "NOSUCH_MEAN",
                             "MEAN_NOSUCH_MEAN", "MEAN_MEAN(1)", "MEAN_MEAN("}) {
        EXPECT_EQ(factory.getNewFeature(name), nullptr) << (name == nullptr ? "null" : name);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(SignalFeatureFactory, FactoriesLiveInAnAccountOfTheirOwn) {
    EXPECT_STREQ(SignalFeatureFactory::getMemAccountName(), "SignalFeatureFactory");
    MemAccount& account = MemAccount::named("SignalFeatureFactory");
    const auto before = account.live();
    {
        const std::unique_ptr<Object> pFactory(new MathSignalFeatureFactory);
        EXPECT_EQ(account.live(), before + 1);
    }
    EXPECT_EQ(account.live(), before);
}

}  // namespace
