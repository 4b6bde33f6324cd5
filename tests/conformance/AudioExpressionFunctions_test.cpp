// Names nothing of the audio features, on purpose: loading the library is all that makes them functions.
#include <murvane/core/MemAccount.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/Registry.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>
#include <string>
#include <vector>

using namespace Zantrix;
using Math::DoubleVector;
using Math::Xpr::FunctionBaseImpl;
using Math::Xpr::FunctionParameter;
using Math::Xpr::ParameterKind;
using Math::Xpr::Registry;
using Math::Xpr::Windows;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

StringVector registered() {
    return Registry::getInstance().getFunctionNames();
}

std::unique_ptr<FunctionBaseImpl> made(const std::string& name) {
    return Registry::getInstance().newFunction(name);
}

DoubleVector evaluated(FunctionBaseImpl& function, const DoubleVector& window) {
    DoubleVector out;
    const Windows argument(&window, 1);
    EXPECT_TRUE(function.evaluate(std::span(&argument, 1), std::span(&out, 1))) << function.getName();
    return out;
}

TEST(AudioExpressionFunctions, ElevenAreRegisteredInTheirOrderWhenTheLibraryIsLoaded) {
    EXPECT_THAT(registered(), ElementsAre("spectrum", "flatness", "harmonicProduct", "silenceRatio", "nonLogPeaks",
                                          "peaks", "ponderatedPeaks", "zeroCrossingRate", "spectralRange",
                                          "maxSpectralRanges", "lowFreqEnergyRatios"));
}

TEST(AudioExpressionFunctions, EachIsCalledByItsRegisteredNameAndTakesOneArgumentX) {
    for (const std::string& name : registered()) {
        const std::unique_ptr<FunctionBaseImpl> pFunction = made(name);
        ASSERT_NE(pFunction, nullptr) << name;
        EXPECT_EQ(pFunction->getName(), name);
        EXPECT_THAT(pFunction->getArgumentNames(), ElementsAre("x")) << name;
    }
}

TEST(AudioExpressionFunctions, OnlyTheSpectralRangesTakeParameters) {
    EXPECT_THAT(made("spectralRange")->getParameters(),
                ElementsAre(FunctionParameter{"frequencyHz", ParameterKind::WholeNumber, true},
                            FunctionParameter{"widthHz", ParameterKind::WholeNumber, true}));
    EXPECT_THAT(made("maxSpectralRanges")->getParameters(),
                ElementsAre(FunctionParameter{"frequenciesList", ParameterKind::Text, true}));
    for (const std::string& name : registered()) {
        if (name != "spectralRange" && name != "maxSpectralRanges") {
            EXPECT_THAT(made(name)->getParameters(), IsEmpty()) << name;
        }
    }
}

TEST(AudioExpressionFunctions, OnlyTheZeroCrossingRateRemembers) {
    for (const std::string& name : registered()) {
        EXPECT_EQ(made(name)->hasMemory(), name == "zeroCrossingRate") << name;
    }
}

TEST(AudioExpressionFunctions, EachNewFunctionIsOneAllocationOfItsAccountUntilItIsDestroyed) {
    const MemAccount& account = MemAccount::named("UserFunctionImpl");
    for (const std::string& name : registered()) {
        const std::int64_t before = account.live();
        std::unique_ptr<FunctionBaseImpl> pFunction = made(name);
        EXPECT_EQ(account.live(), before + 1) << name;
        std::unique_ptr<Cloneable> pClone(pFunction->clone());
        EXPECT_EQ(account.live(), before + 2) << name;
        pFunction.reset();
        pClone.reset();
        EXPECT_EQ(account.live(), before) << name;
    }
}

TEST(AudioExpressionFunctions, NothingIsLeftInAnyAccount) {
    for (const std::string& name : registered()) {
        made(name);  // opens the accounts
    }
    const auto before = MemAccount::snapshot();
    for (const std::string& name : registered()) {
        const std::unique_ptr<FunctionBaseImpl> pFunction = made(name);
        const std::unique_ptr<Cloneable> pClone(pFunction->clone());
    }
    EXPECT_EQ(MemAccount::snapshot(), before);
}

TEST(AudioExpressionFunctions, EveryFunctionMadeHasAFeatureOfItsOwn) {
    const DoubleVector low(64, -0.5);
    const DoubleVector high(64, 0.5);
    const std::unique_ptr<FunctionBaseImpl> pFirst = made("zeroCrossingRate");
    const std::unique_ptr<FunctionBaseImpl> pSecond = made("zeroCrossingRate");
    const DoubleVector fresh = evaluated(*pSecond, high);
    evaluated(*pFirst, low);
    EXPECT_THAT(evaluated(*pFirst, high), ElementsAre(1.0 / 64.0));
    EXPECT_EQ(evaluated(*pSecond, high), DoubleVector(1, 0.0));
    EXPECT_EQ(fresh, evaluated(*made("zeroCrossingRate"), high));
}

TEST(AudioExpressionFunctions, ACopyGoesOnFromTheStateOfTheOriginalAndApartFromIt) {
    const DoubleVector low(64, -0.5);
    const DoubleVector high(64, 0.5);
    const std::unique_ptr<FunctionBaseImpl> pOriginal = made("zeroCrossingRate");
    evaluated(*pOriginal, low);
    const std::unique_ptr<Cloneable> pClone(pOriginal->clone());
    auto* pCopy = dynamic_cast<FunctionBaseImpl*>(pClone.get());
    ASSERT_NE(pCopy, nullptr);
    EXPECT_EQ(pCopy->getName(), "zeroCrossingRate");
    EXPECT_THAT(pCopy->getArgumentNames(), ElementsAre("x"));
    EXPECT_THAT(evaluated(*pCopy, high), ElementsAre(1.0 / 64.0));
    EXPECT_THAT(evaluated(*pOriginal, low), ElementsAre(0.0));
}

TEST(AudioExpressionFunctions, TwoOccurrencesInAFormulaSeeOnlyWhatTheyAreGiven) {
    Math::Xpr::ExpressionList list;
    Math::Xpr::FormulaError error;
    ASSERT_TRUE(list.add("both", "10 * zeroCrossingRate(x) + zeroCrossingRate(-x)", error)) << error.rendered;
    ASSERT_TRUE(list.add("alone", "zeroCrossingRate(x)", error)) << error.rendered;
    DoubleVector out;
    ASSERT_TRUE(list.evaluate(DoubleVector(8, -0.5), out));
    ASSERT_TRUE(list.evaluate(DoubleVector(8, 0.5), out));
    // Were the state shared, the sign would change at the start of each.
    EXPECT_THAT(out, ElementsAre(11.0 / 8.0, 1.0 / 8.0));
    ASSERT_TRUE(list.evaluate(DoubleVector(8, 0.5), out));
    EXPECT_THAT(out, ElementsAre(0.0, 0.0));
}

TEST(AudioExpressionFunctions, ParametersAreThoseOfTheFeatures) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    DoubleVector spectrum;
    for (int bin = 0; bin < 128; ++bin) {
        spectrum.push_back(bin);
    }
    const std::unique_ptr<FunctionBaseImpl> pRange = made("spectralRange");
    ASSERT_TRUE(pRange->configure({{"frequencyHz", 440.0}, {"widthHz", 20.0}}));
    // 440 Hz lies in bin 14 of 31.25 Hz, 0.08 of a bin from its middle.
    const DoubleVector range = evaluated(*pRange, spectrum);
    ASSERT_EQ(range.size(), 4U);
    EXPECT_THAT(std::vector(range.begin(), range.end() - 1), ElementsAre(13.0, 14.0, 15.0));
    const std::unique_ptr<FunctionBaseImpl> pRanges = made("maxSpectralRanges");
    ASSERT_TRUE(pRanges->configure({{"frequenciesList", std::string("350 440")}}));
    EXPECT_EQ(evaluated(*pRanges, spectrum), range);
}

}  // namespace
