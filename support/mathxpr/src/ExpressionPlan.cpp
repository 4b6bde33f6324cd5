#include "ExpressionPlan.h"

#include <murvane/core/Logging.h>
#include <murvane/mathxpr/VectorArithmetic.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <utility>

namespace Zantrix::Math::Xpr {

namespace {

// The same for two operations exactly when they compute the same of the same nodes. Names are identifiers, texts hold
// no quotes, numbers are written so that they read back to the same double: nothing runs into its neighbour.
std::string describeOperation(const PlanNode& node, const SyntaxNode& syntax) {
    const auto shortest = [](double number) {
        char buffer[32];
        return std::string(buffer, std::to_chars(std::begin(buffer), std::end(buffer), number).ptr);
    };
    std::string key = std::to_string(static_cast<int>(node.kind));
    switch (node.kind) {
        case SyntaxNode::Kind::Number:
            return key + ' ' + shortest(node.number);
        case SyntaxNode::Kind::Variable:
            return key + ' ' + std::to_string(node.variable);
        default:
            break;
    }
    key += ' ' + syntax.name;
    for (const std::size_t operand : node.operands) {
        key += ' ' + std::to_string(operand);
    }
    for (const SyntaxParameter& entry : syntax.parameters) {
        const double* pNumber = std::get_if<double>(&entry.parameter.value);
        key += ' ' + entry.parameter.name + '=';
        key += pNumber != nullptr ? shortest(*pNumber) : '"' + std::get<std::string>(entry.parameter.value) + '"';
    }
    return key;
}

}  // namespace

bool ExpressionPlan::add(const SyntaxTree& tree, const StringVector& variables, std::size_t& root,
                         BindingProblem& problem) {
    // Some features settle on the first window that they see. A formula added later is to see its own first one, so it
    // shares nothing with those that were evaluated already.
    if (std::exchange(m_bEvaluated, false)) {
        m_mShareable.clear();
    }
    const std::size_t before = m_vNodes.size();
    std::vector<std::size_t> planned;
    planned.reserve(tree.nodes.size());
    for (const SyntaxNode& node : tree.nodes) {
        std::size_t index = 0;
        if (!addNode(node, variables, planned, index, problem)) {
            forget(before);
            return false;
        }
        planned.push_back(index);
    }
    root = planned.back();
    ++m_uiNbOfFormulas;
    return true;
}

bool ExpressionPlan::addNode(const SyntaxNode& syntax, const StringVector& variables,
                             std::span<const std::size_t> planned, std::size_t& index, BindingProblem& problem) {
    PlanNode node;
    node.kind = syntax.kind;
    node.number = syntax.number;
    node.formula = m_uiNbOfFormulas;
    node.offset = syntax.offset;
    for (const std::uint32_t operand : syntax.operands) {
        node.operands.push_back(planned[operand]);
    }
    if (node.kind == SyntaxNode::Kind::Variable && !bindVariable(syntax, variables, node.variable, problem)) {
        return false;
    }
    std::string operation = describeOperation(node, syntax);
    const auto shared = m_mShareable.find(operation);
    if (shared != m_mShareable.end()) {
        index = shared->second;
        return true;
    }
    index = m_vNodes.size();
    if (node.kind == SyntaxNode::Kind::Call) {
        std::unique_ptr<FunctionBaseImpl> pFunction = bindCall(syntax, problem);
        if (pFunction == nullptr) {
            return false;
        }
        node.pFunction = CloneableObjPtr<FunctionBaseImpl>(pFunction.release());
        node.arguments.resize(node.operands.size());
    }
    // A function with a memory is never found again, and with it nothing that is computed of its values.
    if (!node.pFunction || !node.pFunction->hasMemory()) {
        m_mShareable.emplace(std::move(operation), index);
    }
    m_vNodes.push_back(std::move(node));
    return true;
}

void ExpressionPlan::forget(std::size_t firstNode) {
    m_vNodes.erase(m_vNodes.begin() + static_cast<std::ptrdiff_t>(firstNode), m_vNodes.end());
    std::erase_if(m_mShareable, [&](const auto& entry) { return entry.second >= firstNode; });
}

bool ExpressionPlan::evaluate(std::span<const Windows> bindings, std::size_t count, EvaluationProblem& problem) {
    m_bEvaluated = true;
    for (PlanNode& node : m_vNodes) {
        if (!evaluateNode(node, bindings, count, problem.message)) {
            problem.formula = node.formula;
            problem.offset = node.offset;
            return false;
        }
    }
    return true;
}

Windows ExpressionPlan::valuesOf(std::size_t index, std::span<const Windows> bindings, std::size_t count) const {
    const PlanNode& node = m_vNodes[index];
    return node.kind == SyntaxNode::Kind::Variable ? bindings[node.variable] : Windows(node.values).first(count);
}

bool ExpressionPlan::evaluateNode(PlanNode& node, std::span<const Windows> bindings, std::size_t count,
                                  std::string& message) {
    if (node.kind == SyntaxNode::Kind::Variable) {
        if (bindings[node.variable].size() == count) {
            return true;
        }
        message = "the variable is not bound";
        return false;
    }
    if (node.values.size() < count) {
        // Numbers are filled in here, once for all windows to come.
        node.values.resize(count, DoubleVector(node.kind == SyntaxNode::Kind::Number ? 1 : 0, node.number));
    }
    switch (node.kind) {
        case SyntaxNode::Kind::Number:
            return true;
        case SyntaxNode::Kind::Call: {
            const std::span<DoubleVector> out = std::span(node.values).first(count);
            for (std::size_t i = 0; i < node.operands.size(); ++i) {
                node.arguments[i] = valuesOf(node.operands[i], bindings, count);
            }
            for (DoubleVector& values : out) {
                values.clear();
            }
            if (node.pFunction && node.pFunction->evaluate(node.arguments, out)) {
                return true;
            }
            message = node.pFunction ? node.pFunction->getName() + " failed" : "the function could not be cloned";
            return false;
        }
        case SyntaxNode::Kind::Negation: {
            const Windows operand = valuesOf(node.operands[0], bindings, count);
            for (std::size_t i = 0; i < count; ++i) {
                node.values[i].resize(operand[i].size());
                std::transform(operand[i].begin(), operand[i].end(), node.values[i].begin(), std::negate<>());
            }
            return true;
        }
        default:
            return combineOperands(node, bindings, count, message);
    }
}

bool ExpressionPlan::combineOperands(PlanNode& node, std::span<const Windows> bindings, std::size_t count,
                                     std::string& message) {
    const Windows left = valuesOf(node.operands[0], bindings, count);
    const Windows right = valuesOf(node.operands[1], bindings, count);
    const auto combineAll = [&](auto operation) {
        for (std::size_t i = 0; i < count; ++i) {
            if (!combine(left[i], right[i], node.values[i], operation)) {
                message = concatenate("cannot combine vectors of ", left[i].size(), " and ", right[i].size(),
                                      " values by \"", findBinaryOperator(node.kind)->symbol, '"');
                return false;
            }
        }
        return true;
    };
    switch (node.kind) {
        case SyntaxNode::Kind::Sum:
            return combineAll(std::plus<>());
        case SyntaxNode::Kind::Difference:
            return combineAll(std::minus<>());
        case SyntaxNode::Kind::Product:
            return combineAll(std::multiplies<>());
        default:
            return combineAll(std::divides<>());
    }
}

bool ExpressionPlan::reset() {
    bool done = true;
    for (PlanNode& node : m_vNodes) {
        if (node.pFunction && node.pFunction->hasMemory()) {
            done = node.pFunction->reset() && done;
        }
    }
    return done;
}

}  // namespace Zantrix::Math::Xpr
