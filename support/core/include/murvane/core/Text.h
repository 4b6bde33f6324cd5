#pragma once

#include <murvane/core/Export.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

/// Small operations on text. Letters, digits and numbers are those of ASCII: what a name, a list or a number means must
/// not depend on the program's locale.
namespace Zantrix::Text {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The part of a text without the blanks, tabs and line ends at its ends.
MURVANE_API std::string_view trimmed(std::string_view text);

MURVANE_API std::string lowerCase(std::string_view text);
MURVANE_API std::string upperCase(std::string_view text);

/// Whether two texts are the same but for the case of letters.
MURVANE_API bool equalsIgnoringCase(std::string_view a, std::string_view b);

/// A stream that reads words and numbers from a text.
MURVANE_API std::istringstream reader(const std::string& text);

/// How many characters must be inserted, removed, replaced, or exchanged with their neighbour to make one word of the
/// other; case does not count. Takes time in proportion to the product of the lengths.
MURVANE_API std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace Zantrix::Text
