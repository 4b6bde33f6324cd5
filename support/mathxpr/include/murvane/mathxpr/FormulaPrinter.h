#pragma once

#include <murvane/mathxpr/SyntaxTree.h>

#include <string>

namespace Zantrix::Math::Xpr {

/// Writes a formula in one canonical form: one blank around binary operators and after commas, arguments before
/// parameters, no needless parentheses, numbers in the shortest form that reads back to the same double.
///
/// Parsing the result gives an equal tree, as long as it is not longer than a formula may be: the canonical form of a
/// formula near that size can exceed it.
///
/// @param tree  as `parseFormula` makes it; not empty
MURVANE_API std::string printFormula(const SyntaxTree& tree);

}  // namespace Zantrix::Math::Xpr
