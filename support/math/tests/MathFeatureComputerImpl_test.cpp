#include "ProbeComputer.h"

#include <murvane/infra/ParameterTrie.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace Zantrix;
using namespace Zantrix::Math;
using probecomputer::Computer;
using probecomputer::g_computed;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecord;
using testkit::LogRecorder;

namespace {

LogRecord error(const std::string& message) {
    return {"murvane.math.FeatureComputerImpl", log4cplus::ERROR_LOG_LEVEL, message, "MathFeatureComputerImpl"};
}

static_assert(std::is_abstract_v<FeatureComputerImpl>);
static_assert(!std::is_copy_constructible_v<FeatureComputerWithInputsImpl>);

TEST(FeatureComputer, ReplacesTheOutputByTheValuesOfEveryNameInTheirOrder) {
    Computer computer({"RANGE(0,2)", "MEAN", "RANGE(2,1)", "MEAN"});
    const DoubleVector window{1.0, 2.0, 6.0};
    EXPECT_TRUE(computer.setInput("Amplitude", window));
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 2.0, 3.0, 6.0, 3.0));
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 2.0, 3.0, 6.0, 3.0));
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("RANGE(0,2)", "MEAN", "RANGE(2,1)", "MEAN"));
}

TEST(FeatureComputer, WithoutFeaturesHasNoValues) {
    Computer computer;
    EXPECT_THAT(computer.computed(), IsEmpty());
}

TEST(FeatureComputer, ComputesEachDistinctTailOncePerWindow) {
    g_computed.clear();
    Computer computer({"MEAN_COUNT", "COUNT", "RANGE(0,1)_COUNT", "MEAN_COUNT", "TEMPORALMEAN_MEAN_COUNT",
                       "COUNT(7)_COUNT", "COUNT(7)"});
    const DoubleVector window{1.0, 3.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(3.0, 2.0, 4.0, 2.0, 3.0, 3.0, 3.0, 5.0, 2.0, 4.0));
    EXPECT_EQ(g_computed["COUNT"], 1);
    EXPECT_EQ(g_computed["COUNT(7)"], 2);  // of the window, and of COUNT
    computer.computed();
    EXPECT_EQ(g_computed["COUNT"], 2);
    EXPECT_EQ(g_computed["COUNT(7)"], 4);
}

TEST(FeatureComputer, TailsThatDifferOnlyInCaseOrBlanksAreOne) {
    g_computed.clear();
    Computer computer({"COUNT(1,2)", "count( 1 , 2 )", "MEAN_COUNT(1,2 )"});
    const DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 2.0, 2.0));
    EXPECT_THAT(g_computed, ElementsAre(std::pair<const std::string, int>("COUNT(1,2)", 1)));
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("COUNT(1,2)", "count( 1 , 2 )", "MEAN_COUNT(1,2 )"));
}

TEST(FeatureComputer, AnUnderscoreWithinAParameterMakesNoTail) {
    Computer computer({"COUNT(1_MEAN)", "COUNT(1)_MEAN"});
    const DoubleVector window{1.0, 3.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 4.0, 3.0));
}

TEST(FeatureComputer, AFeatureWithMemorySharedByNamesSeesEachWindowOnce) {
    Computer computer({"CALLS", "MEAN_CALLS", "CALLS"});
    const DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 1.0, 1.0));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 2.0, 2.0));
}

TEST(FeatureComputer, RefusesANameThatIsMalformedOrNotBuilt) {
    Computer computer({"MEAN"});
    for (const char* name : {static_cast<const char*>(nullptr), "", "_MEAN", "MEAN_", "MEAN__MEAN", "MEAN(", "NOSUCH",
                             "NOSUCH_MEAN", "MEAN_NOSUCH", "MEAN_NOSUCH_MEAN", "SLIDINGWINDOW", "MEAN_loud"}) {
        EXPECT_FALSE(computer.addFeature(name)) << (name == nullptr ? "null" : name);
    }
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("MEAN"));
    const DoubleVector window{1.0, 2.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(1.5));
    EXPECT_TRUE(computer.addFeature("RANGE(1,1)_Amplitude"));
    EXPECT_THAT(computer.computed(), ElementsAre(1.5, 2.0));
}

TEST(FeatureComputer, ARefusedNameLeavesTheMemoriesAlone) {
    Computer computer({"CALLS"});
    const DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    EXPECT_FALSE(computer.addFeature("NOSUCH_CALLS"));
    EXPECT_FALSE(computer.addFeature("MEAN_COUNT_NOSUCH"));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0));
    EXPECT_TRUE(computer.addFeature("MEAN_CALLS"));
    EXPECT_THAT(computer.computed(), ElementsAre(3.0, 3.0));
}

TEST(FeatureComputer, ReadsAmplitudeByDefaultWheneverItWasBound) {
    Computer computer({"MEAN"});
    const DoubleVector other{5.0};
    const DoubleVector amplitude{1.0};
    computer.setInput("Other", other);
    EXPECT_THAT(computer.computed(), ElementsAre(5.0));
    computer.setInput("Amplitude", amplitude);
    EXPECT_THAT(computer.computed(), ElementsAre(1.0));
}

TEST(FeatureComputer, ReadsTheFirstInputBoundWhereThereIsNoAmplitude) {
    Computer computer({"MEAN"});
    const DoubleVector first{1.0};
    const DoubleVector second{2.0};
    const DoubleVector third{3.0};
    computer.setInput("z", first);
    computer.setInput("amplitude", second);
    EXPECT_THAT(computer.computed(), ElementsAre(1.0));
    computer.setInput("z", third);
    EXPECT_THAT(computer.computed(), ElementsAre(3.0));
}

TEST(FeatureComputer, ALastElementMayBeTheExactNameOfAnInput) {
    Computer computer;
    const DoubleVector quiet{1.0, 2.0};
    const DoubleVector loud{10.0, 30.0};
    computer.setInput("Amplitude", quiet);
    computer.setInput("loud", loud);
    for (const char* name : {"MEAN", "MEAN_loud", "loud", "RANGE(0,1)_COUNT_loud", "MEAN_Amplitude"}) {
        EXPECT_TRUE(computer.addFeature(name)) << name;
    }
    EXPECT_FALSE(computer.addFeature("MEAN_LOUD"));
    EXPECT_FALSE(computer.addFeature("loud_MEAN"));
    EXPECT_FALSE(computer.addFeature("MEAN_loud()"));
    EXPECT_THAT(computer.computed(), ElementsAre(1.5, 20.0, 10.0, 30.0, 11.0, 1.5));
}

TEST(FeatureComputer, AnInputOfAFeaturesNameHidesItInExactlyThatSpelling) {
    Computer computer;
    const DoubleVector window{1.0, 3.0};
    const DoubleVector named{7.0, 8.0};
    computer.setInput("Amplitude", window);
    computer.setInput("MEAN", named);
    for (const char* name : {"MEAN", "mean", "RANGE(1,1)_MEAN", "RANGE(0,1)_Mean", "MEAN_AMPLITUDE"}) {
        EXPECT_TRUE(computer.addFeature(name)) << name;
    }
    EXPECT_THAT(computer.computed(), ElementsAre(7.0, 8.0, 2.0, 8.0, 2.0, 2.0));
}

TEST(FeatureComputer, AnInputBoundLaterTakesThePlaceOfAFeatureOfItsName) {
    Computer computer({"MEAN", "COUNT_MEAN"});
    const DoubleVector window{1.0, 3.0};
    const DoubleVector named{7.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 3.0));
    computer.setInput("MEAN", named);
    EXPECT_THAT(computer.computed(), ElementsAre(7.0, 8.0));
}

TEST(FeatureComputer, BindingAnInputThatNoNameReadsKeepsTheMemories) {
    Computer computer({"CALLS", "MEAN"});
    const DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    for (const char* name : {"mean", "calls", "COUNT", "MEAN_CALLS", "a,b(c)"}) {
        EXPECT_TRUE(computer.setInput(name, window));
    }
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 1.0));
}

TEST(FeatureComputer, AFeatureThatAnInputTakesThePlaceOfLeavesTheMemoriesOfTheOthers) {
    Computer computer({"CALLS", "MEAN"});
    const DoubleVector window{1.0, 3.0};
    const DoubleVector named{7.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 2.0));
    computer.setInput("MEAN", named);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 7.0));
    EXPECT_TRUE(computer.reset());
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 7.0));
}

TEST(FeatureComputer, TheOutputMayBeAnInput) {
    Computer computer({"MEAN", "COUNT"});
    DoubleVector window{1.0, 3.0};
    computer.setInput("Amplitude", window);
    EXPECT_TRUE(computer.computeFeatures(window));
    EXPECT_THAT(window, ElementsAre(2.0, 2.0, 4.0));
    EXPECT_TRUE(computer.computeFeatures(window));
    EXPECT_THAT(window, ElementsAre(8.0 / 3.0, 3.0, 3.0, 5.0));
    Computer failing({"MEAN", "FAIL"});
    failing.setInput("Amplitude", window);
    EXPECT_FALSE(failing.computeFeatures(window));
    EXPECT_THAT(window, IsEmpty());
}

TEST(FeatureComputer, AnInputIsBoundNotCopied) {
    Computer computer({"MEAN"});
    DoubleVector window{1.0};
    EXPECT_TRUE(computer.setInput("Amplitude", window));
    EXPECT_THAT(computer.computed(), ElementsAre(1.0));
    window = {3.0, 5.0};
    EXPECT_THAT(computer.computed(), ElementsAre(4.0));
    window.assign(100000, 2.0);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0));
}

TEST(FeatureComputer, AVectorThatNobodyKeepsMovesIn) {
    Computer computer({"MEAN"});
    EXPECT_TRUE(computer.setInput("Amplitude", DoubleVector{1.0, 3.0}));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0));
    EXPECT_TRUE(computer.setInput("other", DoubleVector{5.0}));
    EXPECT_TRUE(computer.setInput("third", DoubleVector{6.0}));
    EXPECT_TRUE(computer.addFeature("MEAN_other"));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 5.0));
    EXPECT_TRUE(computer.setInput("other", DoubleVector(1000, 8.0)));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 8.0));
    const DoubleVector kept{9.0};
    EXPECT_TRUE(computer.setInput("other", kept));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 9.0));
}

TEST(FeatureComputer, AVectorThatNobodyKeepsMovesInThroughTheInterface) {
    Computer computer({"MEAN"});
    FeatureComputerWithInputs& inputs = computer;
    EXPECT_TRUE(inputs.setInput("Amplitude", DoubleVector{1.0, 3.0}));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0));
    EXPECT_FALSE(inputs.setInput("", DoubleVector{1.0}));
}

TEST(FeatureComputer, RefusesAnInputWithoutAName) {
    Computer computer({"MEAN"});
    const DoubleVector window{1.0};
    EXPECT_FALSE(computer.setInput(nullptr, window));
    EXPECT_FALSE(computer.setInput("", window));
    EXPECT_FALSE(computer.setInput(nullptr, DoubleVector{1.0}));
    EXPECT_FALSE(computer.setInput("", DoubleVector{1.0}));
    EXPECT_FALSE(computer.setInputWindows(nullptr, {}));
    DoubleVector out;
    EXPECT_FALSE(computer.computeFeatures(out));
}

TEST(FeatureComputer, AFailureLeavesTheOutputEmpty) {
    const DoubleVector window{1.0};
    DoubleVector out{-1.0};
    Computer withoutInput({"MEAN"});
    EXPECT_FALSE(withoutInput.computeFeatures(out));
    EXPECT_THAT(out, IsEmpty());

    for (const StringVector& names :
         {StringVector{"MEAN", "FAIL"}, {"FAIL", "MEAN"}, {"MEAN", "MEAN_FAIL"}, {"MEAN", "RANGE(5,1)_COUNT"}}) {
        Computer computer(names);
        computer.setInput("Amplitude", window);
        out = {-1.0};
        EXPECT_FALSE(computer.computeFeatures(out)) << names.back();
        EXPECT_THAT(out, IsEmpty()) << names.back();
    }
}

TEST(FeatureComputer, WorksAgainOnceTheFailureIsGone) {
    Computer computer({"MEAN", "RANGE(1,1)"});
    DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    DoubleVector out;
    EXPECT_FALSE(computer.computeFeatures(out));
    window = {1.0, 2.0};
    EXPECT_THAT(computer.computed(), ElementsAre(1.5, 2.0));
}

TEST(FeatureComputer, ResetsEveryFeatureWithAMemoryAndKeepsTheList) {
    Computer computer({"CALLS", "TEMPORALMEAN_MEAN", "SLIDINGWINDOW(2)_MEAN", "MEAN_CALLS(1)"});
    DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    window[0] = 3.0;
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 2.0, 1.0, 3.0, 2.0));
    EXPECT_TRUE(computer.reset());
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 3.0, 3.0, 1.0));
    EXPECT_TRUE(computer.reset());
    EXPECT_TRUE(computer.reset());
    EXPECT_EQ(computer.getFeatureNames().size(), 4u);
    EXPECT_TRUE(Computer().reset());
}

TEST(FeatureComputer, ResetTellsOfAFeatureThatCannotAndResetsTheOthers) {
    Computer computer({"CALLS(1)", "STUCK", "CALLS(2)"});
    const DoubleVector window{1.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    EXPECT_FALSE(computer.reset());
    EXPECT_THAT(computer.computed(), ElementsAre(1.0, 2.0, 1.0));
}

TEST(FeatureComputer, ConfigureReplacesTheList) {
    ParameterTrie config;
    config.setStringParameter("featurecomputer.featuresList", "  MEAN\tRANGE(0,1)_COUNT\n CALLS ");
    Computer computer({"CALLS", "COUNT"});
    const DoubleVector window{1.0, 2.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    const LogRecorder log;
    EXPECT_TRUE(computer.configure(config));
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("MEAN", "RANGE(0,1)_COUNT", "CALLS"));
    EXPECT_THAT(computer.computed(), ElementsAre(1.5, 2.0, 1.0));
    config.setStringParameter("featurecomputer.featuresList", "");
    EXPECT_TRUE(computer.configure(config));
    EXPECT_THAT(computer.getFeatureNames(), IsEmpty());
    EXPECT_THAT(computer.computed(), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(FeatureComputer, BlanksWithinParenthesesBelongToAName) {
    ParameterTrie config;
    config.setStringParameter("featurecomputer.featuresList", "RANGE( 1, 2 )_COUNT\n MEAN");
    Computer computer;
    EXPECT_TRUE(computer.configure(config));
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("RANGE( 1, 2 )_COUNT", "MEAN"));
    const LogRecorder log;
    config.setStringParameter("featurecomputer.featuresList", "MEAN RANGE(1, 2 COUNT");
    EXPECT_FALSE(computer.configure(config));
    config.setStringParameter("featurecomputer.featuresList", "MEAN) COUNT");
    EXPECT_FALSE(computer.configure(config));
    EXPECT_THAT(log.records(),
                ElementsAre(error("Unknown feature RANGE(1, 2 COUNT in parameter featurecomputer.featuresList"),
                            error("Unknown feature MEAN) in parameter featurecomputer.featuresList")));
}

TEST(FeatureComputer, ARefusedConfigurationLeavesListAndMemoriesAlone) {
    Computer computer({"CALLS", "MEAN"});
    const DoubleVector window{1.0, 2.0};
    computer.setInput("Amplitude", window);
    computer.computed();
    const LogRecorder log;
    EXPECT_FALSE(computer.configure(ParameterTrie()));
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 1.5));
    ParameterTrie config;
    config.setStringParameter("featurecomputer.featuresList", "COUNT NOSUCH MEAN ALSONOT");
    EXPECT_FALSE(computer.configure(config));
    EXPECT_THAT(computer.getFeatureNames(), ElementsAre("CALLS", "MEAN"));
    EXPECT_THAT(computer.computed(), ElementsAre(3.0, 1.5));
    EXPECT_THAT(log.records(),
                ElementsAre(error("Could not find parameter featurecomputer.featuresList in configuration"),
                            error("Unknown feature NOSUCH in parameter featurecomputer.featuresList")));
}

TEST(FeatureComputer, ComputersCannotBeCloned) {
    const Computer computer;
    const LogRecorder log;
    EXPECT_EQ(computer.clone(), nullptr);
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion("Not implemented : FeatureComputerWithInputsImpl::clone",
                                                           "MathFeatureComputerImpl", 106)));
}

}  // namespace
