#include "FormulaBinder.h"

#include "NearNames.h"

#include <murvane/core/Logging.h>
#include <murvane/mathxpr/FormulaError.h>
#include <murvane/mathxpr/Registry.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace Zantrix::Math::Xpr {

namespace {

std::string unknown(const char* what, const std::string& name, const StringVector& names) {
    const std::string message = concatenate("unknown ", what, " \"", excerpt(name), "\"");
    const StringVector suggestions = nearNames(name, names);
    if (!suggestions.empty()) {
        return concatenate(message, ", did you mean ", alternatives(suggestions), "?");
    }
    return names.empty() ? concatenate(message, ", there is none")
                         : concatenate(message, ", expected ", alternatives(names));
}

// As it was written, more or less: a stream would print six digits, of a number that is wrong for its seventh.
std::string inFull(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

StringVector namesOf(const std::vector<FunctionParameter>& parameters) {
    StringVector names;
    for (const FunctionParameter& parameter : parameters) {
        names.push_back(parameter.name);
    }
    return names;
}

bool checkArguments(const SyntaxNode& node, const FunctionBaseImpl& function, BindingProblem& problem) {
    const std::size_t expected = function.getArgumentNames().size();
    if (node.operands.size() == expected) {
        return true;
    }
    problem = {node.offset, concatenate("expected ", expected, expected == 1 ? " argument" : " arguments", " in ",
                                        function, ", found ", node.operands.size())};
    return false;
}

bool checkParameters(const SyntaxNode& node, const FunctionBaseImpl& function, BindingProblem& problem) {
    for (const SyntaxParameter& entry : node.parameters) {
        const FunctionParameter* pParameter = function.findParameter(entry.parameter.name);
        if (pParameter == nullptr) {
            problem = {entry.offset, unknown(("parameter of " + node.name).c_str(), entry.parameter.name,
                                             namesOf(function.getParameters()))};
            return false;
        }
        if (!accepts(pParameter->kind, entry.parameter)) {
            const double* pNumber = std::get_if<double>(&entry.parameter.value);
            problem = {entry.offset, concatenate("expected ", describe(pParameter->kind), " for ", pParameter->name,
                                                 ", found ", pNumber == nullptr ? "a text" : inFull(*pNumber))};
            return false;
        }
    }
    for (const FunctionParameter& parameter : function.getParameters()) {
        const bool isGiven =
            std::any_of(node.parameters.begin(), node.parameters.end(),
                        [&](const SyntaxParameter& entry) { return entry.parameter.name == parameter.name; });
        if (parameter.required && !isGiven) {
            problem = {node.offset, concatenate("expected the parameter ", parameter.name, " in ", function)};
            return false;
        }
    }
    return true;
}

}  // namespace

bool bindVariable(const SyntaxNode& node, const StringVector& variables, std::size_t& index, BindingProblem& problem) {
    const auto variable = std::find(variables.begin(), variables.end(), node.name);
    if (variable != variables.end()) {
        index = static_cast<std::size_t>(variable - variables.begin());
        return true;
    }
    if (Registry::getInstance().find(node.name) != nullptr) {
        problem = {node.offset, node.name + " is a function, expected its argument in parentheses"};
    } else {
        problem = {node.offset, unknown("variable", node.name, variables)};
    }
    return false;
}

std::unique_ptr<FunctionBaseImpl> bindCall(const SyntaxNode& node, BindingProblem& problem) {
    std::unique_ptr<FunctionBaseImpl> pFunction = Registry::getInstance().newFunction(node.name);
    if (pFunction == nullptr) {
        problem = {node.offset, unknown("function", node.name, Registry::getInstance().getFunctionNames())};
        return nullptr;
    }
    if (!checkArguments(node, *pFunction, problem) || !checkParameters(node, *pFunction, problem)) {
        return nullptr;
    }
    ParameterValues values;
    for (const SyntaxParameter& entry : node.parameters) {
        values.push_back(entry.parameter);
    }
    // Features accumulate what they are configured with, so one without parameters is not configured at all.
    if (!values.empty() && !pFunction->configure(values)) {
        problem = {node.offset, node.name + " refuses the values of its parameters"};
        return nullptr;
    }
    return pFunction;
}

}  // namespace Zantrix::Math::Xpr
