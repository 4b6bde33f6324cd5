#pragma once

#include <murvane/core/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

/// Small operations on text. Letters are those of ASCII: what a name means must not depend on the program's locale.
namespace Zantrix::Text {

/// The part of a text without the blanks, tabs and line ends at its ends.
MURVANE_API std::string_view trimmed(std::string_view text);

MURVANE_API std::string lowerCase(std::string_view text);
MURVANE_API std::string upperCase(std::string_view text);

/// How many characters must be inserted, removed, replaced, or exchanged with their neighbour to make one word of the
/// other; case does not count. Takes time in proportion to the product of the lengths.
MURVANE_API std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace Zantrix::Text
