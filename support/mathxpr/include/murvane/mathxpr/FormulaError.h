#pragma once

#include <murvane/core/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Zantrix::Math::Xpr {

/// What is wrong with a formula, and where.
struct MURVANE_API FormulaError {
    std::size_t line = 0;    ///< 1-based; 0 in a fresh object, which success leaves as it is
    std::size_t column = 0;  ///< 1-based, counted in bytes within the line
    std::string message;     ///< what was expected and what was found, one line without position

    /// For people: position and message, then the line with a caret below the column. Of a long line only the
    /// surroundings are shown. Bytes other than printable ASCII are shown as "?", so the text is safe to print
    /// whatever the formula held, and the caret stands right.
    std::string rendered;
};

/// The error of one position.
///
/// @param offset  0-based, in bytes; the formula's size stands for its end
MURVANE_API FormulaError makeFormulaError(std::string_view formula, std::size_t offset, std::string message);

/// A piece of a formula for use in messages: shortened to 40 bytes, and safe to print.
MURVANE_API std::string excerpt(std::string_view text);

}  // namespace Zantrix::Math::Xpr
