#pragma once

namespace Zantrix::Cli {

/// The room that a number needs while it is written: its text, "-1.2345678901234567e-100" at most, and some.
inline constexpr int c_iMaxNumberLength = 40;

/// Writes the shortest text from which exactly this number can be read again, the same bytes as `std::to_chars`
/// gives, in about half of its time.
///
/// Numbers between 1e-36 and 2^53 are done here, by the method of R. Giulietti, "The Schubfach way to render doubles"
/// (2020); all others are left to `std::to_chars`. NaN is "nan" whatever its sign, as a sign without meaning would
/// make equal tables differ.
///
/// @param out  room for `c_iMaxNumberLength` characters; not terminated
/// @return the end of the text
char* writeShortest(char* out, double value);

}  // namespace Zantrix::Cli
