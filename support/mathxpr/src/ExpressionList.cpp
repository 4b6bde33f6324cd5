#include "ExpressionPlan.h"

#include <murvane/core/Logging.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/FormulaParser.h>

#include <algorithm>
#include <utility>

namespace Zantrix::Math::Xpr {

namespace {

constexpr const char* c_szSource = "ExpressionList";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.mathxpr.ExpressionList");
    return logger;
}

// A record is one line; the formula and the caret below it are for people who see the error itself.
std::string_view firstLine(std::string_view text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

ExpressionList::ExpressionList(StringVector variables)
    : m_vVariables(std::move(variables)),
      m_vBindings(m_vVariables.size()),
      m_vIsBound(m_vVariables.size()),
      m_pPlan(new ExpressionPlan) {}

ExpressionList::~ExpressionList() = default;

ExpressionList::ExpressionList(const ExpressionList& other) = default;
ExpressionList& ExpressionList::operator=(const ExpressionList& other) = default;

bool ExpressionList::add(const char* name, std::string_view formula, FormulaError& error) {
    const auto refuse = [&](FormulaError reason) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Formula \"", name == nullptr ? "" : name,
                     "\" is refused: ", firstLine(reason.rendered));
        error = std::move(reason);
        return false;
    };
    if (name == nullptr || *name == '\0') {
        return refuse({0, 0, "a formula needs a name", "a formula needs a name"});
    }
    if (std::find(m_vNames.begin(), m_vNames.end(), name) != m_vNames.end()) {
        return refuse({0, 0, "the name is taken", "the name is taken"});
    }
    SyntaxTree tree;
    FormulaError syntaxError;
    if (!parseFormula(formula, tree, syntaxError)) {
        return refuse(std::move(syntaxError));
    }
    std::size_t root = 0;
    BindingProblem problem;
    if (!m_pPlan->add(tree, m_vVariables, root, problem)) {
        return refuse(makeFormulaError(formula, problem.offset, std::move(problem.message)));
    }
    m_vNames.emplace_back(name);
    m_vFormulas.emplace_back(formula);
    m_vRoots.push_back(root);
    m_bHasValues = false;
    return true;
}

bool ExpressionList::bind(const char* variable, Windows windows) {
    const auto found = std::find(m_vVariables.begin(), m_vVariables.end(), variable == nullptr ? "" : variable);
    if (found == m_vVariables.end()) {
        return false;
    }
    const auto index = static_cast<std::size_t>(found - m_vVariables.begin());
    m_vBindings[index] = windows;
    m_vIsBound[index] = true;
    m_bHasValues = false;
    return true;
}

bool ExpressionList::evaluate() {
    m_bHasValues = false;
    m_strError.clear();
    if (!countWindows()) {
        return false;
    }
    EvaluationProblem problem;
    if (!m_pPlan->evaluate(m_vBindings, m_uiNbOfWindows, problem)) {
        const std::string& formula = m_vFormulas[problem.formula];
        return fail(concatenate("formula \"", m_vNames[problem.formula], "\", ",
                                makeFormulaError(formula, problem.offset, std::move(problem.message)).rendered));
    }
    m_bHasValues = true;
    return true;
}

Windows ExpressionList::getValues(std::size_t formula) const {
    if (!m_bHasValues || formula >= m_vRoots.size()) {
        return {};
    }
    return m_pPlan->valuesOf(m_vRoots[formula], m_vBindings, m_uiNbOfWindows);
}

bool ExpressionList::evaluate(Windows x, std::span<DoubleVector> out) {
    for (DoubleVector& values : out) {
        values.clear();
    }
    if (m_vVariables.empty()) {
        return fail("the list has no variable");
    }
    if (x.size() != out.size()) {
        return fail(concatenate(x.size(), " windows, but room for the values of ", out.size()));
    }
    m_vBindings.front() = x;
    m_vIsBound.front() = true;
    const bool done = evaluate();
    for (std::size_t formula = 0; done && formula < m_vRoots.size(); ++formula) {
        const Windows values = getValues(formula);
        for (std::size_t i = 0; i < out.size(); ++i) {
            out[i].append(values[i]);
        }
    }
    // The caller's windows need not live longer than this call.
    m_vBindings.front() = {};
    m_vIsBound.front() = false;
    m_bHasValues = false;
    return done;
}

bool ExpressionList::evaluate(const DoubleVector& x, DoubleVector& out) {
    return evaluate(Windows(&x, 1), std::span<DoubleVector>(&out, 1));
}

bool ExpressionList::reset() {
    m_bHasValues = false;
    return m_pPlan->reset();
}

Cloneable* ExpressionList::clone() const {
    return new ExpressionList(*this);
}

bool ExpressionList::fail(std::string message) {
    m_bHasValues = false;
    m_strError = std::move(message);
    logger().log(LogLevel::Error, c_szSource, __LINE__, "Evaluation failed: ", firstLine(m_strError));
    return false;
}

// How many windows there are; false unless all variables that are bound agree about it.
bool ExpressionList::countWindows() {
    const auto first = std::find(m_vIsBound.begin(), m_vIsBound.end(), true);
    if (first == m_vIsBound.end()) {
        return fail("no variable is bound");
    }
    m_uiNbOfWindows = m_vBindings[static_cast<std::size_t>(first - m_vIsBound.begin())].size();
    for (std::size_t i = 0; i < m_vVariables.size(); ++i) {
        if (m_vIsBound[i] && m_vBindings[i].size() != m_uiNbOfWindows) {
            return fail(concatenate("variable ", m_vVariables[i], " is bound to ", m_vBindings[i].size(),
                                    " windows, others to ", m_uiNbOfWindows));
        }
    }
    return true;
}

}  // namespace Zantrix::Math::Xpr
