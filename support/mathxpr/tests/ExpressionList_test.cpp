#include "FormulaTesting.h"
#include "TestFunctions.h"

#include <murvane/core/MemAccount.h>
#include <testkit/LogRecorder.h>
#include <testkit/SpecialNumbers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>

namespace {

using namespace Zantrix::Math::Xpr;
using formulatesting::add;
using testfunctions::DoubleVector;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNan;
using testing::SizeIs;
using testkit::c_dInfinity;
using testkit::c_dNaN;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::MemAccount;

// The value of one formula of one window.
DoubleVector evaluated(std::string_view formula, const DoubleVector& x = {}) {
    ExpressionList list;
    add(list, "f", formula);
    DoubleVector out;
    EXPECT_TRUE(list.evaluate(x, out)) << list.getError();
    return out;
}

TEST(ExpressionList, ANumberIsAVectorOfOne) {
    EXPECT_THAT(evaluated("42", {1.0, 2.0}), ElementsAre(42.0));
}

TEST(ExpressionList, XIsTheWindow) {
    EXPECT_THAT(evaluated("x", {1.0, 2.0}), ElementsAre(1.0, 2.0));
    EXPECT_THAT(evaluated("x", {}), IsEmpty());
}

TEST(ExpressionList, ArithmeticWorksElementByElement) {
    const DoubleVector x = {1.0, -2.0, 4.0};
    EXPECT_THAT(evaluated("x + x", x), ElementsAre(2.0, -4.0, 8.0));
    EXPECT_THAT(evaluated("x - x", x), ElementsAre(0.0, 0.0, 0.0));
    EXPECT_THAT(evaluated("x * x", x), ElementsAre(1.0, 4.0, 16.0));
    EXPECT_THAT(evaluated("x / x", x), ElementsAre(1.0, 1.0, 1.0));
    EXPECT_THAT(evaluated("-x", x), ElementsAre(-1.0, 2.0, -4.0));
}

TEST(ExpressionList, AVectorOfOneGoesWithEveryElementOnEitherSide) {
    const DoubleVector x = {1.0, 2.0, 4.0};
    EXPECT_THAT(evaluated("x - 1", x), ElementsAre(0.0, 1.0, 3.0));
    EXPECT_THAT(evaluated("1 - x", x), ElementsAre(0.0, -1.0, -3.0));
    EXPECT_THAT(evaluated("8 / x", x), ElementsAre(8.0, 4.0, 2.0));
    EXPECT_THAT(evaluated("x / mean(x * 3 / 7)", x), ElementsAre(1.0, 2.0, 4.0));
}

TEST(ExpressionList, AVectorOfOneWithAnEmptyOneIsEmpty) {
    EXPECT_THAT(evaluated("x + 1", {}), IsEmpty());
    EXPECT_THAT(evaluated("1 / x", {}), IsEmpty());
    EXPECT_THAT(evaluated("x * x", {}), IsEmpty());
    EXPECT_THAT(evaluated("-x", {}), IsEmpty());
}

TEST(ExpressionList, ArithmeticIsThatOfDoubles) {
    const DoubleVector x = {0.0, c_dInfinity, c_dNaN, -1.0};
    EXPECT_THAT(evaluated("1 / x", x), ElementsAre(c_dInfinity, 0.0, IsNan(), -1.0));
    EXPECT_THAT(evaluated("x - x", x), ElementsAre(0.0, IsNan(), IsNan(), 0.0));
    EXPECT_TRUE(std::signbit(evaluated("-x", {0.0}).front()));
    EXPECT_THAT(evaluated("1e308 * 10"), ElementsAre(c_dInfinity));
}

TEST(ExpressionList, OtherSizesFailWithAMessageThatShowsTheOperator) {
    ExpressionList list;
    add(list, "sum", "x + range(x, startIndex=0, length=2)");
    DoubleVector out = {7.0};
    const LogRecorder recorder;
    EXPECT_FALSE(list.evaluate({1.0, 2.0, 3.0}, out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_EQ(list.getError(),
              "formula \"sum\", column 3: cannot combine vectors of 3 and 2 values by \"+\"\n"
              "x + range(x, startIndex=0, length=2)\n"
              "  ^");
    EXPECT_THAT(recorder.records(), ElementsAre(LogRecord{"murvane.mathxpr.ExpressionList", 40000,
                                                          "Evaluation failed: formula \"sum\", column 3: cannot "
                                                          "combine vectors of 3 and 2 values by \"+\"",
                                                          "ExpressionList"}));
}

TEST(ExpressionList, AnEmptyVectorWithOneOfSeveralFails) {
    ExpressionList list;
    add(list, "f", "x * range(x, startIndex=0, length=0)");
    DoubleVector out;
    const LogRecorder recorder;
    EXPECT_FALSE(list.evaluate({1.0, 2.0}, out));
    EXPECT_TRUE(list.evaluate({1.0}, out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_EQ(list.getError(), "") << "the error goes when an evaluation succeeds";
}

TEST(ExpressionList, CallsFunctionsWithParameters) {
    const DoubleVector x = {1.0, 2.0, 3.0, 4.0};
    EXPECT_THAT(evaluated("range(doubled(x), startIndex=1, length=2)", x), ElementsAre(4.0, 6.0));
    EXPECT_THAT(evaluated("scaled(x, gain=0.5, factors=\"2 3\") + mean(x)", x), ElementsAre(5.5, 8.5, 11.5, 14.5));
    EXPECT_THAT(evaluated("scaled(3, factors=\"\")", x), ElementsAre(3.0));
}

TEST(ExpressionList, CallsFunctionsOfSeveralArguments) {
    EXPECT_THAT(evaluated("maximum(x, 3 - x)", {0.0, 2.0, 5.0}), ElementsAre(3.0, 2.0, 5.0));
}

TEST(ExpressionList, AFailingFunctionFailsTheEvaluationAndIsShown) {
    ExpressionList list;
    add(list, "good", "x");
    add(list, "bad", "1 + picky(x)");
    DoubleVector out;
    const LogRecorder recorder;
    EXPECT_FALSE(list.evaluate(DoubleVector{}, out));
    EXPECT_EQ(list.getError(), "formula \"bad\", column 5: picky failed\n1 + picky(x)\n    ^");
    EXPECT_TRUE(list.evaluate({1.0}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0));
}

TEST(ExpressionList, RefusesNamesThatAreNullEmptyOrTaken) {
    ExpressionList list;
    add(list, "f", "x");
    FormulaError error;
    const LogRecorder recorder;
    EXPECT_FALSE(list.add(nullptr, "x", error));
    EXPECT_EQ(error.line, 0u);
    EXPECT_EQ(error.message, "a formula needs a name");
    EXPECT_FALSE(list.add("", "x", error));
    EXPECT_FALSE(list.add("f", "x", error));
    EXPECT_EQ(error.message, "the name is taken");
    EXPECT_THAT(list.getNames(), ElementsAre("f"));
    EXPECT_THAT(recorder.records(), SizeIs(3));
}

TEST(ExpressionList, ARefusedFormulaLeavesTheOthersAsTheyWere) {
    ExpressionList list;
    add(list, "a", "mean(x)");
    FormulaError error;
    const LogRecorder recorder;
    EXPECT_FALSE(list.add("b", "doubled(mean(x)) + mean(doubled(x)) + y", error));
    add(list, "b", "doubled(mean(x)) + mean(doubled(x))");
    DoubleVector out;
    ASSERT_TRUE(list.evaluate({1.0, 3.0}, out));
    EXPECT_THAT(out, ElementsAre(2.0, 8.0));
    EXPECT_THAT(list.getNames(), ElementsAre("a", "b"));
    EXPECT_THAT(list.getFormulas(), ElementsAre("mean(x)", "doubled(mean(x)) + mean(doubled(x))"));
}

TEST(ExpressionList, GivesTheValuesOfEachFormulaAndWindow) {
    const std::vector<DoubleVector> x = {{1.0, 2.0}, {3.0}, {}};
    ExpressionList list;
    add(list, "a", "x");
    add(list, "b", "doubled(x) + 1");
    add(list, "c", "5");
    ASSERT_TRUE(list.bind("x", x));
    EXPECT_THAT(list.getValues(0), IsEmpty()) << "before an evaluation";
    ASSERT_TRUE(list.evaluate());
    EXPECT_THAT(list.getValues(0), ElementsAre(ElementsAre(1.0, 2.0), ElementsAre(3.0), IsEmpty()));
    EXPECT_THAT(list.getValues(1), ElementsAre(ElementsAre(3.0, 5.0), ElementsAre(7.0), IsEmpty()));
    EXPECT_THAT(list.getValues(2), ElementsAre(ElementsAre(5.0), ElementsAre(5.0), ElementsAre(5.0)));
    EXPECT_THAT(list.getValues(3), IsEmpty());
    ASSERT_TRUE(list.bind("x", Windows(x).first(1)));
    ASSERT_TRUE(list.evaluate());
    EXPECT_THAT(list.getValues(2), ElementsAre(ElementsAre(5.0))) << "fewer windows than before";
    ASSERT_TRUE(list.bind("x", {}));
    EXPECT_TRUE(list.evaluate());
    EXPECT_THAT(list.getValues(1), IsEmpty());
}

TEST(ExpressionList, BindsSeveralVariablesByName) {
    const std::vector<DoubleVector> x = {{1.0, 2.0}, {3.0}};
    const std::vector<DoubleVector> noise = {{10.0}, {20.0}};
    ExpressionList list({"x", "noise"});
    add(list, "f", "x / noise");
    EXPECT_FALSE(list.bind("y", x));
    EXPECT_FALSE(list.bind(nullptr, x));
    ASSERT_TRUE(list.bind("x", x));
    ASSERT_TRUE(list.bind("noise", noise));
    ASSERT_TRUE(list.evaluate());
    EXPECT_THAT(list.getValues(0), ElementsAre(ElementsAre(0.1, 0.2), ElementsAre(3.0 / 20.0)));
}

TEST(ExpressionList, FailsWithoutTheBindingsThatItNeeds) {
    const std::vector<DoubleVector> two = {{1.0}, {2.0}};
    ExpressionList list({"x", "y"});
    add(list, "f", "x + y");
    const LogRecorder recorder;
    EXPECT_FALSE(list.evaluate());
    EXPECT_EQ(list.getError(), "no variable is bound");
    list.bind("x", two);
    EXPECT_FALSE(list.evaluate());
    EXPECT_EQ(list.getError(), "formula \"f\", column 5: the variable is not bound\nx + y\n    ^");
    list.bind("y", Windows(two).first(1));
    EXPECT_FALSE(list.evaluate());
    EXPECT_EQ(list.getError(), "variable y is bound to 1 windows, others to 2");
    EXPECT_THAT(list.getValues(0), IsEmpty());
    EXPECT_THAT(recorder.records(), SizeIs(3));

    std::vector<DoubleVector> out(1, DoubleVector{7.0});
    EXPECT_FALSE(list.evaluate(two, out));
    EXPECT_THAT(out, ElementsAre(IsEmpty()));
    EXPECT_FALSE(ExpressionList(Zantrix::StringVector{}).evaluate(two, out));
}

TEST(ExpressionList, OneCallBindsTheWindowsForThatCallOnly) {
    ExpressionList list;
    add(list, "f", "x");
    DoubleVector out;
    ASSERT_TRUE(list.evaluate({1.0}, out));
    EXPECT_THAT(list.getValues(0), IsEmpty());
    const LogRecorder recorder;
    EXPECT_FALSE(list.evaluate());
}

TEST(ExpressionList, AListWithoutFormulasGivesNothing) {
    ExpressionList list;
    DoubleVector out = {7.0};
    EXPECT_TRUE(list.evaluate({1.0}, out));
    EXPECT_THAT(out, IsEmpty());
}

TEST(ExpressionList, ResetBringsMemoriesBackToTheStart) {
    ExpressionList list;
    add(list, "f", "temporalMean(x)");
    DoubleVector out;
    list.evaluate({2.0}, out);
    list.evaluate({4.0}, out);
    EXPECT_THAT(out, ElementsAre(3.0));
    EXPECT_TRUE(list.reset());
    list.evaluate({4.0}, out);
    EXPECT_THAT(out, ElementsAre(4.0));
}

TEST(ExpressionList, AMemoryThatCannotBeResetIsLeftAlone) {
    ExpressionList list;
    add(list, "f", "previous(x)");
    DoubleVector out;
    list.evaluate({2.0}, out);
    EXPECT_TRUE(list.reset());
    list.evaluate({4.0}, out);
    EXPECT_THAT(out, ElementsAre(2.0));
}

TEST(ExpressionList, CloneGoesOnWithFunctionsOfItsOwn) {
    auto pList = std::make_unique<ExpressionList>();
    add(*pList, "f", "temporalMean(x) + range(x, startIndex=0, length=1)");
    DoubleVector out;
    pList->evaluate({2.0}, out);
    const std::unique_ptr<Zantrix::Cloneable> pCloned(pList->clone());
    auto* pClone = dynamic_cast<ExpressionList*>(pCloned.get());
    ASSERT_NE(pClone, nullptr);
    pList->evaluate({6.0}, out);
    EXPECT_THAT(out, ElementsAre(10.0));
    pList.reset();
    pClone->evaluate({4.0}, out);
    EXPECT_THAT(out, ElementsAre(7.0));

    ExpressionList assigned;
    assigned = *pClone;
    assigned = *&assigned;
    assigned.evaluate({6.0}, out);
    EXPECT_THAT(out, ElementsAre(10.0));
}

TEST(ExpressionList, ReturnsEverythingToItsAccounts) {
    const auto accounts = MemAccount::snapshot();
    {
        ExpressionList list;
        add(list, "f", "temporalMean(doubled(x)) + mean(x)");
        const ExpressionList copy(list);
        EXPECT_EQ(MemAccount::named("UserFunctionImpl").live(), accounts.at("UserFunctionImpl") + 6);
    }
    EXPECT_EQ(MemAccount::snapshot(), accounts);
}

TEST(ExpressionList, EvaluatesAFormulaOfTheGreatestSize) {
    std::string formula = "x";
    for (int i = 0; i < 32767; ++i) {
        formula += "+x";
    }
    EXPECT_THAT(evaluated(formula, {1.0}), ElementsAre(32768.0));
}

// A random formula of numbers and x, and its value by the arithmetic of the compiler.
std::pair<std::string, double> randomArithmetic(std::mt19937_64& random, double x, int depth) {
    if (depth == 0) {
        const int number = static_cast<int>(random() % 20);
        return random() % 2 == 0 ? std::pair(std::string("x"), x)
                                 : std::pair(std::to_string(number), static_cast<double>(number));
    }
    const auto [left, a] = randomArithmetic(random, x, depth - 1);
    const auto [right, b] = randomArithmetic(random, x, depth - 1 - static_cast<int>(random() % depth));
    switch (random() % 5) {
        case 0:
            return {"(" + left + "+" + right + ")", a + b};
        case 1:
            return {"(" + left + "-" + right + ")", a - b};
        case 2:
            return {"(" + left + "*" + right + ")", a * b};
        case 3:
            return {"(" + left + "/" + right + ")", a / b};
        default:
            return {"(-" + left + ")", -a};
    }
}

TEST(ExpressionList, AgreesWithTheArithmeticOfTheCompilerOnRandomFormulas) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 500; ++i) {
        const auto [formula, expected] = randomArithmetic(random, 0.3, static_cast<int>(random() % 6));
        const double value = evaluated(formula, {0.3}).at(0);
        ASSERT_TRUE((std::isnan(value) && std::isnan(expected)) || std::memcmp(&value, &expected, sizeof value) == 0)
            << formula << " is " << value << ", not " << expected;
    }
}

}  // namespace
