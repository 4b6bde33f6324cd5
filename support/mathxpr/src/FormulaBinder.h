#pragma once

#include <murvane/core/StringVector.h>
#include <murvane/mathxpr/FunctionBaseImpl.h>
#include <murvane/mathxpr/SyntaxTree.h>

#include <cstddef>
#include <memory>
#include <string>

namespace Zantrix::Math::Xpr {

/// What is wrong with the meaning of a formula, and the place of the word in question.
struct BindingProblem {
    std::size_t offset = 0;
    std::string message;
};

/// The index of a node's variable.
///
/// @return false when there is no variable of that name
bool bindVariable(const SyntaxNode& node, const StringVector& variables, std::size_t& index, BindingProblem& problem);

/// A new function for one call, its parameters set.
///
/// @return null when the function or a parameter is unknown, the number of arguments is wrong, a parameter is of the
///         wrong kind or missing, or the function refuses its parameters
std::unique_ptr<FunctionBaseImpl> bindCall(const SyntaxNode& node, BindingProblem& problem);

}  // namespace Zantrix::Math::Xpr
