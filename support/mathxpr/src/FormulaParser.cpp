#include "FormulaLexer.h"

#include <murvane/mathxpr/FormulaParser.h>

#include <algorithm>
#include <utility>

namespace Zantrix::Math::Xpr {

namespace {

std::string found(const Token& token) {
    switch (token.kind) {
        case Token::Kind::End:
            return "the end of the formula";
        case Token::Kind::Text:
            return "a text";
        default:
            return '"' + excerpt(token.text) + '"';
    }
}

// A recursive descent over the grammar, one operation per rule. Only parentheses and calls recurse, and those are
// counted.
class Parser {
public:
    Parser(std::string_view formula, FormulaError& error)
        : m_strFormula(formula), m_error(error), m_lexer(formula), m_token(m_lexer.next()) {}

    bool parse(SyntaxTree& tree) {
        Index root = 0;
        if (!binary(1, root)) {
            return false;
        }
        if (m_token.kind != Token::Kind::End) {
            return expected("an operator or the end of the formula");
        }
        tree.nodes = std::move(m_vNodes);
        return true;
    }

private:
    using Index = std::uint32_t;
    using Kind = SyntaxNode::Kind;

    void advance() { m_token = m_lexer.next(); }

    bool fail(std::size_t offset, std::string message) {
        m_error = makeFormulaError(m_strFormula, offset, std::move(message));
        return false;
    }

    bool expected(const std::string& what) {
        return fail(m_token.offset, m_token.kind == Token::Kind::Bad
                                        ? m_token.problem + ", expected " + what
                                        : "expected " + what + ", found " + found(m_token));
    }

    Index add(SyntaxNode node) {
        m_vNodes.push_back(std::move(node));
        return static_cast<Index>(m_vNodes.size() - 1);
    }

    const BinaryOperator* binaryOperator(int precedence) const {
        const auto row = std::find_if(
            c_aBinaryOperators.begin(), c_aBinaryOperators.end(),
            [&](const BinaryOperator& op) { return op.precedence == precedence && m_token.isSymbol(op.symbol); });
        return row == c_aBinaryOperators.end() ? nullptr : &*row;
    }

    // expr and term: operands of the next higher rank, joined by the operators of this one.
    bool binary(int precedence, Index& result) {
        const auto operand = [&](Index& index) { return precedence == 1 ? binary(2, index) : factor(index); };
        if (!operand(result)) {
            return false;
        }
        while (const BinaryOperator* pOperator = binaryOperator(precedence)) {
            const std::size_t offset = m_token.offset;
            advance();
            Index right = 0;
            if (!operand(right)) {
                return false;
            }
            result = add({.kind = pOperator->kind, .operands = {result, right}, .offset = offset});
        }
        return true;
    }

    bool factor(Index& result) {
        if (!m_token.isSymbol('-')) {
            return primary(result);
        }
        const std::size_t offset = m_token.offset;
        advance();
        Index operand = 0;
        if (!primary(operand)) {
            return false;
        }
        result = add({.kind = Kind::Negation, .operands = {operand}, .offset = offset});
        return true;
    }

    bool primary(Index& result) {
        const Token token = m_token;
        if (token.kind == Token::Kind::Number) {
            advance();
            result = add({.kind = Kind::Number, .number = token.number, .offset = token.offset});
            return true;
        }
        if (token.kind == Token::Kind::Identifier) {
            advance();
            if (m_token.isSymbol('(')) {
                return nested([&] { return call(token, result); });
            }
            result = add({.kind = Kind::Variable, .name = std::string(token.text), .offset = token.offset});
            return true;
        }
        if (token.isSymbol('(')) {
            return nested([&] {
                if (!binary(1, result)) {
                    return false;
                }
                return m_token.isSymbol(')') || expected("an operator or \")\"");
            });
        }
        return expected("a number, a name or \"(\"");
    }

    // What stands between "(" and ")", with the depth counted; `content` leaves the closing parenthesis to be skipped.
    template <typename Content>
    bool nested(Content content) {
        if (m_uiDepth == c_uiMaxFormulaDepth) {
            return fail(m_token.offset,
                        "the formula nests deeper than " + std::to_string(c_uiMaxFormulaDepth) + " levels");
        }
        ++m_uiDepth;
        advance();
        if (!content()) {
            return false;
        }
        --m_uiDepth;
        advance();
        return true;
    }

    bool call(const Token& name, Index& result) {
        SyntaxNode node{.kind = Kind::Call, .name = std::string(name.text), .offset = name.offset};
        while (true) {
            bool isParameter = false;
            if (!argument(node, isParameter)) {
                return false;
            }
            if (m_token.isSymbol(')')) {
                result = add(std::move(node));
                return true;
            }
            if (!m_token.isSymbol(',')) {
                return expected(isParameter ? "\",\" or \")\"" : "an operator, \",\" or \")\"");
            }
            advance();
        }
    }

    // An expression, after which an operator may follow, or a parameter, after which none may.
    bool argument(SyntaxNode& call, bool& isParameter) {
        FormulaLexer ahead = m_lexer;
        if (m_token.kind == Token::Kind::Identifier && ahead.next().isSymbol('=')) {
            isParameter = true;
            return call.operands.empty() ? expected("an argument before the first parameter") : parameter(call);
        }
        Index operand = 0;
        if (!binary(1, operand)) {
            return false;
        }
        call.operands.push_back(operand);
        return true;
    }

    bool parameter(SyntaxNode& call) {
        SyntaxParameter entry{{std::string(m_token.text), 0.0}, m_token.offset};
        const bool isGiven =
            std::any_of(call.parameters.begin(), call.parameters.end(),
                        [&](const SyntaxParameter& other) { return other.parameter.name == entry.parameter.name; });
        if (isGiven) {
            return fail(entry.offset, "the parameter " + excerpt(entry.parameter.name) + " is given twice");
        }
        advance();
        advance();
        const bool isNegative = m_token.isSymbol('-');
        if (isNegative) {
            advance();
        }
        if (m_token.kind == Token::Kind::Number) {
            entry.parameter.value = isNegative ? -m_token.number : m_token.number;
        } else if (m_token.kind == Token::Kind::Text && !isNegative) {
            entry.parameter.value = std::string(m_token.text);
        } else {
            return expected(isNegative ? "a number" : "a number or a text in double quotes");
        }
        advance();
        call.parameters.push_back(std::move(entry));
        return true;
    }

    std::string_view m_strFormula;
    FormulaError& m_error;
    FormulaLexer m_lexer;
    Token m_token;
    std::size_t m_uiDepth = 0;
    std::vector<SyntaxNode> m_vNodes;
};

}  // namespace

bool parseFormula(std::string_view formula, SyntaxTree& tree, FormulaError& error) {
    if (formula.size() > c_uiMaxFormulaSize) {
        error = makeFormulaError(formula, c_uiMaxFormulaSize,
                                 "the formula is longer than " + std::to_string(c_uiMaxFormulaSize) + " bytes");
        return false;
    }
    return Parser(formula, error).parse(tree);
}

}  // namespace Zantrix::Math::Xpr
