#include "FormulaTesting.h"

#include <murvane/mathxpr/FormulaPrinter.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <string>

namespace {

using namespace Zantrix::Math::Xpr;
using formulatesting::parsed;
using Kind = SyntaxNode::Kind;

/// Makes random trees of the form that the parser makes.
class RandomFormulas {
public:
    explicit RandomFormulas(std::uint64_t seed) : m_random(seed) {}

    SyntaxTree tree() {
        SyntaxTree tree;
        append(tree, static_cast<int>(below(7)));
        return tree;
    }

private:
    std::uint64_t below(std::uint64_t limit) { return m_random() % limit; }

    std::string identifier() {
        constexpr std::string_view letters = "abcXYZ_0189";
        std::string name(1, letters[below(7)]);
        for (std::uint64_t i = below(6); i > 0; --i) {
            name += letters[below(letters.size())];
        }
        return name;
    }

    double number() {
        switch (below(3)) {
            case 0:
                return static_cast<double>(below(1000));
            case 1:
                return static_cast<double>(below(100000)) / 1000.0;
            default:
                const double any = std::bit_cast<double>(m_random() >> 1);
                return std::isfinite(any) ? any : 0.0;
        }
    }

    std::string text() {
        std::string text;
        for (std::uint64_t i = below(12); i > 0; --i) {
            const char c = static_cast<char>(below(256));
            text += (c >= 0 && c < ' ') || c == '"' || c == '\x7f' ? '=' : c;
        }
        return text;
    }

    std::uint32_t append(SyntaxTree& tree, int depth) {
        SyntaxNode node;
        node.kind = depth == 0 ? static_cast<Kind>(below(2)) : static_cast<Kind>(below(8));
        if (node.kind == Kind::Number) {
            node.number = number();
        } else if (node.kind == Kind::Variable) {
            node.name = identifier();
        } else if (node.kind == Kind::Call) {
            appendCall(tree, node, depth);
        } else {
            node.operands.push_back(append(tree, depth - 1));
            if (node.kind != Kind::Negation) {
                node.operands.push_back(append(tree, depth - 1));
            }
        }
        tree.nodes.push_back(node);
        return static_cast<std::uint32_t>(tree.nodes.size() - 1);
    }

    void appendCall(SyntaxTree& tree, SyntaxNode& node, int depth) {
        node.name = identifier();
        for (std::uint64_t i = 1 + below(3); i > 0; --i) {
            node.operands.push_back(append(tree, depth - 1));
        }
        for (std::uint64_t i = below(4); i > 0; --i) {
            ParameterValue value{identifier() + std::to_string(i), text()};
            if (below(2) == 0) {
                value.value = below(2) == 0 ? number() : -number();
            }
            node.parameters.push_back({value, 0});
        }
    }

    std::mt19937_64 m_random;
};

TEST(FormulaPrinter, PrintThenParseIsTheIdentityOnRandomFormulas) {
    RandomFormulas formulas(20240611);
    for (int i = 0; i < 5000; ++i) {
        const SyntaxTree tree = formulas.tree();
        const std::string printed = printFormula(tree);
        ASSERT_LE(printed.size(), c_uiMaxFormulaSize);
        ASSERT_EQ(parsed(printed), tree) << printed;
        ASSERT_EQ(printFormula(parsed(printed)), printed);
    }
}

TEST(FormulaPrinter, WritesOneFormForAllWaysToWriteAFormula) {
    EXPECT_EQ(printFormula(parsed("( ( a ) )+(b*( c ))")), "a + b * c");
    EXPECT_EQ(printFormula(parsed("f(x,q=-1.50,(y),p=\"t u\")")), "f(x, y, q=-1.5, p=\"t u\")");
    EXPECT_EQ(printFormula(parsed("0.50e1")), "5");
}

TEST(FormulaPrinter, KeepsTheParenthesesThatMatter) {
    for (const char* formula : {"a - (b - c)", "a - (b + c)", "a / (b * c)", "a / (b / c)", "(a + b) * c", "-(a + b)",
                                "-(-a)", "-(a * b)", "-a * b", "a - -b", "a * (b + c)", "f(a + b) * -f(-a)"}) {
        EXPECT_EQ(printFormula(parsed(formula)), formula);
    }
}

TEST(FormulaPrinter, DropsTheParenthesesThatDoNot) {
    EXPECT_EQ(printFormula(parsed("((a - b) - c) + (d * e)")), "a - b - c + d * e");
    EXPECT_EQ(printFormula(parsed("(-a) * (f(x))")), "-a * f(x)");
}

TEST(FormulaPrinter, DoesNotRecurseIntoLongSums) {
    std::string formula = "x";
    for (int i = 0; i < 16000; ++i) {
        formula += " - x";
    }
    EXPECT_EQ(printFormula(parsed(formula)), formula);
}

TEST(FormulaPrinter, AtTheGreatestDepthThePrintedFormIsNoDeeper) {
    std::string formula = "x";
    for (std::size_t i = 0; i < c_uiMaxFormulaDepth; ++i) {
        formula = "-(" + formula + ")";
    }
    const SyntaxTree tree = parsed(formula);
    EXPECT_EQ(parsed(printFormula(tree)), tree);
}

}  // namespace
