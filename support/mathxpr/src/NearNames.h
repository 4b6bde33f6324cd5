#pragma once

#include <murvane/core/StringVector.h>

#include <string>
#include <string_view>

namespace Zantrix::Math::Xpr {

/// Those names that a writer of `word` may have meant, nearest first, three at most: no farther away than a third of
/// the word's length, at least one character.
StringVector nearNames(std::string_view word, const StringVector& names);

/// "a", "a or b", "a, b or c".
std::string alternatives(const StringVector& names);

}  // namespace Zantrix::Math::Xpr
