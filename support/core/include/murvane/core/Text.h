#pragma once

#include <murvane/core/Export.h>

#include <charconv>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

/// Small operations on text. Letters, digits and numbers are those of ASCII: what a name, a list or a number means must
/// not depend on the program's locale.
namespace Zantrix::Text {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Whether a byte is a character that shows, or a blank.
constexpr bool isPrintable(char c) {
    return c >= ' ' && c <= '~';
}

/// The text itself; "" for null.
constexpr const char* orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

/// The part of a text without the blanks, tabs and line ends at its ends.
MURVANE_API std::string_view trimmed(std::string_view text);

MURVANE_API std::string lowerCase(std::string_view text);
MURVANE_API std::string upperCase(std::string_view text);

/// Whether two texts are the same but for the case of letters.
MURVANE_API bool equalsIgnoringCase(std::string_view a, std::string_view b);

/// A stream that reads words and numbers from a text.
MURVANE_API std::istringstream reader(const std::string& text);

/// Reads a decimal number that is the whole text: no blanks, no "+".
///
/// @param value  unchanged on failure
/// @return false when the text is not such a number, or `Number` cannot hold it
template <typename Number>
bool parseWhole(std::string_view text, Number& value) {
    const char* const end = text.data() + text.size();
    Number parsed{};
    const auto [rest, error] = std::from_chars(text.data(), end, parsed);
    if (error != std::errc() || rest != end) {
        return false;
    }
    value = parsed;
    return true;
}

/// The shortest text from which exactly this number can be read again.
MURVANE_API std::string shortest(double number);

/// How many characters must be inserted, removed, replaced, or exchanged with their neighbour to make one word of the
/// other; case does not count. Takes time in proportion to the product of the lengths.
MURVANE_API std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace Zantrix::Text
