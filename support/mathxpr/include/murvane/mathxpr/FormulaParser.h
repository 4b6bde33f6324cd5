#pragma once

#include <murvane/mathxpr/FormulaError.h>
#include <murvane/mathxpr/SyntaxTree.h>

#include <cstddef>
#include <string_view>

namespace Zantrix::Math::Xpr {

/// How deep parentheses and calls may nest.
inline constexpr std::size_t c_uiMaxFormulaDepth = 200;

/// How long a formula may be, in bytes.
inline constexpr std::size_t c_uiMaxFormulaSize = std::size_t{64} * 1024;

/// Takes a formula apart.
///
///     expr    := term { ("+" | "-") term }
///     term    := factor { ("*" | "/") factor }
///     factor  := [ "-" ] primary
///     primary := number | identifier | identifier "(" expr { "," argument } ")" | "(" expr ")"
///     argument := expr | identifier "=" ( [ "-" ] number | "\"" text "\"" )
///
/// Blanks, tabs and line ends may stand between words. Operations of one rank are evaluated from left to right. A
/// number is decimal, with or without fraction and exponent ("440", ".5", "1e-3"), and must be one that a double can
/// hold. An identifier is a letter or "_" and then letters, digits and "_". A text is any bytes but double quotes and
/// control characters; it has no escapes. The result does not depend on the locale.
///
/// @param tree   replaced by the formula; unchanged on failure
/// @param error  set on failure, unchanged on success
/// @return false when the formula is not of this form, nests deeper than `c_uiMaxFormulaDepth`, is longer than
///         `c_uiMaxFormulaSize`, or gives a call the same parameter twice
MURVANE_API bool parseFormula(std::string_view formula, SyntaxTree& tree, FormulaError& error);

}  // namespace Zantrix::Math::Xpr
