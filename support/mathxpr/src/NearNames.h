#pragma once

#include <murvane/core/StringVector.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Zantrix::Math::Xpr {

/// How many characters must be inserted, removed or replaced to make one word of the other; case does not count.
/// Takes time in proportion to the product of the lengths.
std::size_t editDistance(std::string_view a, std::string_view b);

/// Those names that a writer of `word` may have meant, nearest first, three at most: no farther away than a third of
/// the word's length, at least one character.
StringVector nearNames(std::string_view word, const StringVector& names);

/// "a", "a or b", "a, b or c".
std::string alternatives(const StringVector& names);

}  // namespace Zantrix::Math::Xpr
