#pragma once

#include "FormulaBinder.h"

#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/StringVector.h>
#include <murvane/mathxpr/FunctionBaseImpl.h>
#include <murvane/mathxpr/SyntaxTree.h>

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace Zantrix::Math::Xpr {

/// One operation that is evaluated once per window.
struct PlanNode {
    SyntaxNode::Kind kind = SyntaxNode::Kind::Number;
    double number = 0.0;                          // of a Number
    std::size_t variable = 0;                     // of a Variable
    CloneableObjPtr<FunctionBaseImpl> pFunction;  // of a Call
    std::vector<std::size_t> operands;            // nodes before this one
    std::vector<Windows> arguments;               // of a Call: room for what the operands stand for
    std::vector<DoubleVector> values;             // of each window, storage kept
    std::size_t formula = 0;                      // the first formula that needs the node
    std::size_t offset = 0;                       // its place there
};

/// Why an evaluation failed, and where.
struct EvaluationProblem {
    std::size_t formula = 0;
    std::size_t offset = 0;
    std::string message;
};

/// The operations of several formulas in the order of evaluation, each distinct one once. A copy has its own
/// functions, in the same state.
class ExpressionPlan : public virtual Cloneable {
public:
    /// Adds the operations of one formula, numbered in the order of addition.
    ///
    /// @param root  the node that holds the formula's values
    /// @return false when the formula has no meaning; the plan is then as it was
    bool add(const SyntaxTree& tree, const StringVector& variables, std::size_t& root, BindingProblem& problem);

    /// Evaluates everything.
    ///
    /// @param bindings  the windows of each variable, `count` of each that is used
    bool evaluate(std::span<const Windows> bindings, std::size_t count, EvaluationProblem& problem);

    /// The values of a node after an evaluation with these bindings.
    Windows valuesOf(std::size_t node, std::span<const Windows> bindings, std::size_t count) const;

    /// Resets the functions that have a memory; true unless one of them could not.
    bool reset();

    Cloneable* clone() const override { return new ExpressionPlan(*this); }

private:
    bool addNode(const SyntaxNode& node, const StringVector& variables, std::span<const std::size_t> planned,
                 std::size_t& index, BindingProblem& problem);
    void forget(std::size_t firstNode);
    bool evaluateNode(PlanNode& node, std::span<const Windows> bindings, std::size_t count, std::string& message);
    bool combineOperands(PlanNode& node, std::span<const Windows> bindings, std::size_t count, std::string& message);

    std::vector<PlanNode> m_vNodes;
    std::map<std::string, std::size_t> m_mShareable;  // by what the node computes
    std::size_t m_uiNbOfFormulas = 0;
    bool m_bEvaluated = false;  // since the last formula was added
};

}  // namespace Zantrix::Math::Xpr
