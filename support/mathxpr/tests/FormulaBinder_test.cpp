// What is said about formulas that can be parsed and have no meaning.
#include <murvane/core/MemAccount.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace Zantrix::Math::Xpr;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::MemAccount;

// The error of a formula that is refused, checked to leave nothing behind.
FormulaError refused(std::string_view formula) {
    const auto accounts = MemAccount::snapshot();
    ExpressionList list;
    FormulaError error;
    const LogRecorder recorder;
    EXPECT_FALSE(list.add("f", formula, error));
    EXPECT_THAT(recorder.records(), ElementsAre(LogRecord{"murvane.mathxpr.ExpressionList", 40000,
                                                          "Formula \"f\" is refused: column " +
                                                              std::to_string(error.column) + ": " + error.message,
                                                          "ExpressionList"}));
    EXPECT_THAT(list.getNames(), IsEmpty());
    EXPECT_EQ(MemAccount::snapshot(), accounts);
    return error;
}

struct Refusal {
    const char* formula;
    std::size_t column;
    const char* message;
};

std::ostream& operator<<(std::ostream& os, const Refusal& refusal) {
    return os << refusal.formula;
}

class MeaninglessFormula : public testing::TestWithParam<Refusal> {};

TEST_P(MeaninglessFormula, TellsColumnAndWhatWasExpected) {
    const FormulaError error = refused(GetParam().formula);
    EXPECT_EQ(error.column, GetParam().column);
    EXPECT_EQ(error.message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    FormulaBinder, MeaninglessFormula,
    testing::Values(Refusal{"x + y", 5, "unknown variable \"y\", did you mean x?"},
                    Refusal{"signal", 1, "unknown variable \"signal\", expected x"},
                    Refusal{"1 + mean", 5, "mean is a function, expected its argument in parentheses"},
                    Refusal{"doubld(x)", 1, "unknown function \"doubld\", did you mean doubled?"},
                    Refusal{"1 + MEAN(x)", 5, "unknown function \"MEAN\", did you mean mean?"},
                    Refusal{"temporalMeen(x)", 1, "unknown function \"temporalMeen\", did you mean temporalMean?"},
                    Refusal{"mean(x, x)", 1, "expected 1 argument in mean(x), found 2"},
                    Refusal{"2 * maximum(x)", 5, "expected 2 arguments in maximum(a, b), found 1"},
                    Refusal{"mean(x, width=2)", 9, "unknown parameter of mean \"width\", there is none"},
                    Refusal{"range(x, startIdx=1, length=2)", 10,
                            "unknown parameter of range \"startIdx\", did you mean startIndex?"},
                    Refusal{"range(x, q=1)", 10, "unknown parameter of range \"q\", expected startIndex or length"},
                    Refusal{"range(x, startIndex=1)", 1,
                            "expected the parameter length in range(x, startIndex=..., length=...)"},
                    Refusal{"range(x, startIndex=1.5, length=2)", 10,
                            "expected a whole number from 0 to 2147483647 for startIndex, found 1.5"},
                    Refusal{"range(x, startIndex=-1, length=2)", 10,
                            "expected a whole number from 0 to 2147483647 for startIndex, found -1"},
                    Refusal{"range(x, startIndex=\"1\", length=2)", 10,
                            "expected a whole number from 0 to 2147483647 for startIndex, found a text"},
                    Refusal{"range(x, startIndex=2147483648, length=2)", 10,
                            "expected a whole number from 0 to 2147483647 for startIndex, found 2147483648"},
                    Refusal{"scaled(x, factors=2)", 11, "expected a text in double quotes for factors, found 2"},
                    Refusal{"scaled(x, factors=\"2 abc\")", 1, "scaled refuses the values of its parameters"},
                    Refusal{"doubled(x", 10, "expected an operator, \",\" or \")\", found the end of the formula"}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST(FormulaBinder, AnUnknownFunctionUnlikeAnyOtherBringsTheListOfFunctions) {
    const FormulaError error = refused("doubled(x) + mean(x) + nothingLikeThis(x)");
    EXPECT_EQ(error.column, 24u);
    EXPECT_THAT(error.message, testing::StartsWith("unknown function \"nothingLikeThis\", expected "));
    EXPECT_THAT(error.message, testing::HasSubstr("doubled, mean, temporalMean"));
}

TEST(FormulaBinder, SuggestsTheNearestNamesFirst) {
    ExpressionList list({"signalA", "signalB2", "noise", "signal9", "signals"});
    FormulaError error;
    const LogRecorder recorder;
    EXPECT_FALSE(list.add("f", "signalB", error));
    EXPECT_EQ(error.message, "unknown variable \"signalB\", did you mean signalA, signalB2 or signal9?");
    EXPECT_FALSE(list.add("f", "NOICE", error));
    EXPECT_EQ(error.message, "unknown variable \"NOICE\", did you mean noise?");
}

}  // namespace
