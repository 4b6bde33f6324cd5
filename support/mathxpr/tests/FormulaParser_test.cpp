#include "FormulaTesting.h"

#include <murvane/mathxpr/FormulaPrinter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>

namespace {

using namespace Zantrix::Math::Xpr;
using formulatesting::parsed;
using Kind = SyntaxNode::Kind;

// The error, with the tree checked to be untouched.
FormulaError refused(std::string_view formula) {
    SyntaxTree tree = parsed("untouched");
    FormulaError error;
    EXPECT_FALSE(parseFormula(formula, tree, error));
    EXPECT_EQ(tree, parsed("untouched"));
    return error;
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

TEST(FormulaParser, NodesStandInTheOrderOfEvaluation) {
    const SyntaxTree tree = parsed("a + f(b, 2, p=-3, q=\"t\") * 4");
    ASSERT_EQ(tree.nodes.size(), 7u);
    EXPECT_EQ(tree.nodes[0], (SyntaxNode{Kind::Variable, 0.0, "a", {}, {}, 0}));
    EXPECT_EQ(tree.nodes[1], (SyntaxNode{Kind::Variable, 0.0, "b", {}, {}, 0}));
    EXPECT_EQ(tree.nodes[2], (SyntaxNode{Kind::Number, 2.0, "", {}, {}, 0}));
    EXPECT_EQ(tree.nodes[3], (SyntaxNode{Kind::Call, 0.0, "f", {1, 2}, {{{"p", -3.0}, 0}, {{"q", "t"}, 0}}, 0}));
    EXPECT_EQ(tree.nodes[4], (SyntaxNode{Kind::Number, 4.0, "", {}, {}, 0}));
    EXPECT_EQ(tree.nodes[5], (SyntaxNode{Kind::Product, 0.0, "", {3, 4}, {}, 0}));
    EXPECT_EQ(tree.nodes[6], (SyntaxNode{Kind::Sum, 0.0, "", {0, 5}, {}, 0}));
}

TEST(FormulaParser, ProductsBindStrongerThanSums) {
    EXPECT_EQ(parsed("a+b*c"), parsed("a+(b*c)"));
    EXPECT_EQ(parsed("a*b+c"), parsed("(a*b)+c"));
    EXPECT_NE(parsed("a+b*c"), parsed("(a+b)*c"));
}

TEST(FormulaParser, OperationsOfOneRankGroupFromTheLeft) {
    EXPECT_EQ(parsed("a-b+c-d"), parsed("((a-b)+c)-d"));
    EXPECT_EQ(parsed("a/b*c/d"), parsed("((a/b)*c)/d"));
    EXPECT_NE(parsed("a-b-c"), parsed("a-(b-c)"));
}

TEST(FormulaParser, MinusBeforeAFactorBindsStrongerThanProducts) {
    EXPECT_EQ(parsed("-a*b"), parsed("(-a)*b"));
    EXPECT_EQ(parsed("a*-b"), parsed("a*(-b)"));
    EXPECT_EQ(parsed("a--b"), parsed("a-(-b)"));
    EXPECT_EQ(parsed("-2").nodes.size(), 2u);
}

TEST(FormulaParser, BlanksAndLineEndsDoNotMatter) {
    EXPECT_EQ(parsed(" \t\r\nf ( x ,\n p\t= - 1 , q = \"a b\" ) "), parsed("f(x,p=-1,q=\"a b\")"));
}

TEST(FormulaParser, ReadsNumbersOfEveryForm) {
    const std::pair<const char*, double> cases[] = {{"0", 0.0},
                                                    {"007", 7.0},
                                                    {"440", 440.0},
                                                    {"3.25", 3.25},
                                                    {".5", 0.5},
                                                    {"5.", 5.0},
                                                    {"1e3", 1e3},
                                                    {"1E-3", 1e-3},
                                                    {"1.5e+2", 150.0},
                                                    {"0.1", 0.1},
                                                    {"5e-324", 5e-324},
                                                    {"1.7976931348623157e308", 1.7976931348623157e308},
                                                    {"9007199254740993", 9007199254740992.0}};
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(parsed(text).nodes.front().number, value) << text;
    }
}

TEST(FormulaParser, ALongNumberIsRoundedOnce) {
    EXPECT_EQ(parsed("0." + repeated("3", 60000)).nodes.front().number, 1.0 / 3.0);
}

TEST(FormulaParser, NamesOfSpecialValuesAreOrdinaryNames) {
    for (const char* name : {"nan", "inf", "infinity", "e5", "_", "x1_"}) {
        EXPECT_EQ(parsed(name).nodes.front().kind, Kind::Variable) << name;
    }
}

TEST(FormulaParser, TextsHoldAnyBytesButQuotesAndControls) {
    const SyntaxTree tree = parsed("f(x, t=\"a\\ \xc3\xa9 \xff (,=\")");
    EXPECT_EQ(std::get<std::string>(tree.nodes.back().parameters.front().parameter.value), "a\\ \xc3\xa9 \xff (,=");
}

struct Refusal {
    std::string formula;
    std::size_t column;
    std::string message;
};

std::ostream& operator<<(std::ostream& os, const Refusal& refusal) {
    return os << refusal.formula;
}

class RefusedFormula : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedFormula, TellsColumnAndWhatWasExpected) {
    const FormulaError error = refused(GetParam().formula);
    EXPECT_EQ(error.line, 1u);
    EXPECT_EQ(error.column, GetParam().column);
    EXPECT_EQ(error.message, GetParam().message);
}

const std::string c_strPrimary = "expected a number, a name or \"(\", found ";

INSTANTIATE_TEST_SUITE_P(
    FormulaParser, RefusedFormula,
    testing::Values(
        Refusal{"", 1, c_strPrimary + "the end of the formula"},
        Refusal{"   ", 4, c_strPrimary + "the end of the formula"},
        Refusal{"a +", 4, c_strPrimary + "the end of the formula"}, Refusal{"a + * b", 5, c_strPrimary + "\"*\""},
        Refusal{"--a", 2, c_strPrimary + "\"-\""}, Refusal{"+a", 1, c_strPrimary + "\"+\""},
        Refusal{"()", 2, c_strPrimary + "\")\""}, Refusal{"f()", 3, c_strPrimary + "\")\""},
        Refusal{"f(x,)", 5, c_strPrimary + "\")\""}, Refusal{"f(,x)", 3, c_strPrimary + "\",\""},
        Refusal{"\"text\"", 1, c_strPrimary + "a text"},
        Refusal{"a b", 3, "expected an operator or the end of the formula, found \"b\""},
        Refusal{"a)", 2, "expected an operator or the end of the formula, found \")\""},
        Refusal{"a = 3", 3, "expected an operator or the end of the formula, found \"=\""},
        Refusal{"2x", 2, "expected an operator or the end of the formula, found \"x\""},
        Refusal{"0x10", 2, "expected an operator or the end of the formula, found \"x10\""},
        Refusal{"1e", 2, "expected an operator or the end of the formula, found \"e\""},
        Refusal{"1.2.3", 4, "expected an operator or the end of the formula, found \".3\""},
        Refusal{"(a", 3, "expected an operator or \")\", found the end of the formula"},
        Refusal{"(a, b)", 3, "expected an operator or \")\", found \",\""},
        Refusal{"f(x", 4, "expected an operator, \",\" or \")\", found the end of the formula"},
        Refusal{"f(x y)", 5, "expected an operator, \",\" or \")\", found \"y\""},
        Refusal{"f(x, p=1 + 2)", 10, "expected \",\" or \")\", found \"+\""},
        Refusal{"f(p=1)", 3, "expected an argument before the first parameter, found \"p\""},
        Refusal{"f(x, p=)", 8, "expected a number or a text in double quotes, found \")\""},
        Refusal{"f(x, p=y)", 8, "expected a number or a text in double quotes, found \"y\""},
        Refusal{"f(x, p=-\"t\")", 9, "expected a number, found a text"},
        Refusal{"f(x, p=--1)", 9, "expected a number, found \"-\""},
        Refusal{"f(x, p=1, q=2, p=3)", 16, "the parameter p is given twice"},
        Refusal{"1e999", 1, "the number 1e999 is out of range, expected a number, a name or \"(\""},
        Refusal{"1 + 1e-999", 5, "the number 1e-999 is out of range, expected a number, a name or \"(\""},
        Refusal{"a $ b", 3, "unexpected \"$\", expected an operator or the end of the formula"},
        Refusal{".", 1, "unexpected \".\", expected a number, a name or \"(\""},
        Refusal{"\xc3\xa9", 1, "unexpected byte 0xc3, expected a number, a name or \"(\""},
        Refusal{"x\xff", 2, "unexpected byte 0xff, expected an operator or the end of the formula"},
        Refusal{std::string("x\0y", 3), 2, "unexpected byte 0x00, expected an operator or the end of the formula"},
        Refusal{"f(x, t=\"ab", 8,
                "the text that begins here lacks its closing \", expected a number or a text in double quotes"},
        Refusal{std::string("f(x, t=\"a\0b\")", 13), 10,
                "unexpected byte 0x00 in a text, expected a number or a text in double quotes"},
        Refusal{"f(x, t=\"a\x7f\")", 10,
                "unexpected byte 0x7f in a text, expected a number or a text in double quotes"}));

TEST(FormulaParser, ShowsTheLineWithACaretBelowTheColumn) {
    EXPECT_EQ(refused("spectrum(x, =3)").rendered,
              "column 13: expected a number, a name or \"(\", found \"=\"\n"
              "spectrum(x, =3)\n"
              "            ^");
}

TEST(FormulaParser, ShowsOnlyTheLineOfTheErrorOfAFormulaOfSeveral) {
    const FormulaError error = refused("mean(x) +\n\tmean(x) mean(x)\n+ 1");
    EXPECT_EQ(error.line, 2u);
    EXPECT_EQ(error.column, 10u);
    EXPECT_EQ(error.rendered,
              "line 2, column 10: expected an operator or the end of the formula, found \"mean\"\n"
              " mean(x) mean(x)\n"
              "         ^");
}

TEST(FormulaParser, ShowsBytesThatCannotBePrintedAsQuestionMarks) {
    EXPECT_EQ(refused("x\x1b[2J\xc3\xa9").rendered,
              "column 2: unexpected byte 0x1b, expected an operator or the end of the formula\n"
              "x?[2J??\n"
              " ^");
}

TEST(FormulaParser, ShowsOnlyTheSurroundingsInALongLine) {
    const FormulaError error = refused(repeated("a+", 200) + ")" + repeated("b", 200));
    EXPECT_EQ(error.column, 401u);
    EXPECT_EQ(error.rendered, "column 401: " + c_strPrimary + "\")\"\n..." + repeated("a+", 30) + ")" +
                                  repeated("b", 39) + "...\n" + repeated(" ", 63) + "^");
}

TEST(FormulaParser, ShortensLongWordsInMessages) {
    EXPECT_EQ(refused("a " + repeated("b", 5000)).message,
              "expected an operator or the end of the formula, found \"" + repeated("b", 40) + "...\"");
}

TEST(FormulaParser, AcceptsTheGreatestDepth) {
    parsed(repeated("(", c_uiMaxFormulaDepth) + "x" + repeated(")", c_uiMaxFormulaDepth));
    parsed(repeated("-f(", c_uiMaxFormulaDepth) + "x" + repeated(")", c_uiMaxFormulaDepth));
}

TEST(FormulaParser, DepthIsCountedAlongOneBranch) {
    parsed(repeated("((x))+", 5000) + "x");
}

TEST(FormulaParser, RefusesDeeperNestingWhereItGoesTooDeep) {
    for (const std::string opening : {"(", "-(", "f(", "1+(", "f(x,"}) {
        const std::string formula = repeated(opening, 10000) + "x" + repeated(")", 10000);
        const FormulaError error = refused(formula);
        EXPECT_EQ(error.message, "the formula nests deeper than 200 levels");
        EXPECT_EQ(error.column, c_uiMaxFormulaDepth * opening.size() + opening.find('(') + 1) << opening;
    }
    EXPECT_EQ(refused(repeated("(", 10000)).message, "the formula nests deeper than 200 levels");
}

TEST(FormulaParser, AcceptsTheGreatestSizeAndRefusesAByteMore) {
    const std::string greatest = repeated("x+", c_uiMaxFormulaSize / 2 - 1) + "xy";
    ASSERT_EQ(greatest.size(), c_uiMaxFormulaSize);
    EXPECT_EQ(parsed(greatest).nodes.size(), c_uiMaxFormulaSize - 1);
    const FormulaError error = refused(greatest + "z");
    EXPECT_EQ(error.column, c_uiMaxFormulaSize + 1);
    EXPECT_EQ(error.message, "the formula is longer than 65536 bytes");
}

TEST(FormulaParser, RefusesAMegabyteAtOnce) {
    EXPECT_EQ(refused(std::string(1 << 20, '(')).message, "the formula is longer than 65536 bytes");
    EXPECT_EQ(refused(std::string(1 << 20, ' ')).message, "the formula is longer than 65536 bytes");
}

}  // namespace
