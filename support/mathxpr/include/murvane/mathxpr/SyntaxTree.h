#pragma once

#include <murvane/mathxpr/FunctionParameter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Zantrix::Math::Xpr {

/// A parameter of a call, with the place of its name in the formula.
struct SyntaxParameter {
    ParameterValue parameter;
    std::size_t offset = 0;

    /// Two are the same wherever they stand.
    bool operator==(const SyntaxParameter& other) const { return parameter == other.parameter; }
};

/// One operation of a formula.
struct SyntaxNode {
    enum class Kind : std::uint8_t { Number, Variable, Call, Negation, Sum, Difference, Product, Quotient };

    Kind kind = Kind::Number;
    double number = 0.0;                        ///< of a Number; finite, never negative
    std::string name{};                         ///< of a Variable or a Call
    std::vector<std::uint32_t> operands{};      ///< indices of nodes before this one; of a Call, its arguments
    std::vector<SyntaxParameter> parameters{};  ///< of a Call, in the order of the formula; each name once
    std::size_t offset = 0;                     ///< 0-based place in the formula; of a binary operation, its symbol

    /// Two are the same wherever they stand.
    bool operator==(const SyntaxNode& other) const {
        return kind == other.kind && number == other.number && name == other.name && operands == other.operands &&
               parameters == other.parameters;
    }
};

/// A formula taken apart, before any function was looked up.
///
/// The nodes stand in the order of evaluation: operands before what uses them, left before right, the root last, and
/// each node is used once. There are no pointers between them, so that a sum of ten thousand terms, whose tree is ten
/// thousand levels deep, is copied, compared and destroyed without recursion. Two trees are equal exactly when their
/// formulas differ at most in blanks, in needless parentheses and in how numbers are written.
struct SyntaxTree {
    std::vector<SyntaxNode> nodes;

    bool operator==(const SyntaxTree&) const = default;
};

/// The binary operations: how they are written and how strongly they bind.
struct BinaryOperator {
    SyntaxNode::Kind kind;
    char symbol;
    int precedence;
};

inline constexpr std::array<BinaryOperator, 4> c_aBinaryOperators = {{
    {SyntaxNode::Kind::Sum, '+', 1},
    {SyntaxNode::Kind::Difference, '-', 1},
    {SyntaxNode::Kind::Product, '*', 2},
    {SyntaxNode::Kind::Quotient, '/', 2},
}};

/// The row of an operation; null when it is not a binary one.
constexpr const BinaryOperator* findBinaryOperator(SyntaxNode::Kind kind) {
    for (const BinaryOperator& row : c_aBinaryOperators) {
        if (row.kind == kind) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace Zantrix::Math::Xpr
