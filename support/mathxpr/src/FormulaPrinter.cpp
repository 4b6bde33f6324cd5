#include <murvane/core/Text.h>
#include <murvane/mathxpr/FormulaPrinter.h>

#include <utility>
#include <variant>

namespace Zantrix::Math::Xpr {

namespace {

constexpr int c_iNegationPrecedence = 3;
constexpr int c_iPrimaryPrecedence = 4;

std::string printValue(const ParameterValue& value) {
    const double* pNumber = std::get_if<double>(&value.value);
    return pNumber != nullptr ? Text::shortest(*pNumber) : '"' + std::get<std::string>(value.value) + '"';
}

int precedence(const SyntaxNode& node) {
    if (const BinaryOperator* pOperator = findBinaryOperator(node.kind)) {
        return pOperator->precedence;
    }
    return node.kind == SyntaxNode::Kind::Negation ? c_iNegationPrecedence : c_iPrimaryPrecedence;
}

// Walks the tree with a stack of its own: what is still to be written, the next piece on top.
class Printer {
public:
    explicit Printer(const SyntaxTree& tree) : m_tree(tree) {}

    std::string print() {
        m_vPending.emplace_back(static_cast<std::uint32_t>(m_tree.nodes.size() - 1));
        while (!m_vPending.empty()) {
            const Piece piece = std::move(m_vPending.back());
            m_vPending.pop_back();
            if (const std::string* pText = std::get_if<std::string>(&piece)) {
                m_strResult += *pText;
            } else {
                expand(m_tree.nodes[std::get<std::uint32_t>(piece)]);
            }
        }
        return std::move(m_strResult);
    }

private:
    using Piece = std::variant<std::uint32_t, std::string>;

    // Pieces go onto the stack from right to left.
    void expand(const SyntaxNode& node) {
        switch (node.kind) {
            case SyntaxNode::Kind::Number:
                m_strResult += Text::shortest(node.number);
                return;
            case SyntaxNode::Kind::Variable:
                m_strResult += node.name;
                return;
            case SyntaxNode::Kind::Call:
                expandCall(node);
                return;
            case SyntaxNode::Kind::Negation:
                m_strResult += '-';
                pushOperand(node.operands[0], c_iPrimaryPrecedence);
                return;
            default:
                const BinaryOperator& op = *findBinaryOperator(node.kind);
                // Operations of one rank group from the left, so only a right operand of the same rank needs
                // parentheses.
                pushOperand(node.operands[1], op.precedence + 1);
                m_vPending.emplace_back(std::string{' ', op.symbol, ' '});
                pushOperand(node.operands[0], op.precedence);
        }
    }

    void expandCall(const SyntaxNode& node) {
        m_strResult += node.name + '(';
        m_vPending.emplace_back(")");
        for (auto entry = node.parameters.rbegin(); entry != node.parameters.rend(); ++entry) {
            m_vPending.emplace_back(", " + entry->parameter.name + "=" + printValue(entry->parameter));
        }
        for (std::size_t i = node.operands.size(); i-- > 0;) {
            m_vPending.emplace_back(node.operands[i]);
            if (i > 0) {
                m_vPending.emplace_back(", ");
            }
        }
    }

    void pushOperand(std::uint32_t operand, int leastPrecedence) {
        const bool inParentheses = precedence(m_tree.nodes[operand]) < leastPrecedence;
        if (inParentheses) {
            m_vPending.emplace_back(")");
        }
        m_vPending.emplace_back(operand);
        if (inParentheses) {
            m_vPending.emplace_back("(");
        }
    }

    const SyntaxTree& m_tree;
    std::vector<Piece> m_vPending;
    std::string m_strResult;
};

}  // namespace

std::string printFormula(const SyntaxTree& tree) {
    return Printer(tree).print();
}

}  // namespace Zantrix::Math::Xpr
