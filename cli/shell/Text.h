#pragma once

#include <murvane/core/Text.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Small operations on text.
namespace Zantrix::Cli {

using Text::upperCase;

/// A field of a CSV row: in quotes, with quotes doubled, where it holds a comma, a quote or a line end (RFC 4180).
std::string csvField(std::string_view text);

/// A JSON string with its quotes. Bytes that are not UTF-8 become U+FFFD; see `isUtf8`.
std::string jsonString(std::string_view text);

/// A JSON number: the shortest that gives this one back; null for what JSON has no number for.
std::string jsonNumber(double value);

/// The text with control characters and backslashes as C writes them: \t, \n, \r, \\, \x1b.
std::string escaped(std::string_view text);

bool isUtf8(std::string_view text);

/// Appends a character in UTF-8.
///
/// @param code  its number, at most 0x10ffff
void appendUtf8(std::string& text, unsigned code);

/// Two lower-case digits a byte.
std::string hexBytes(std::string_view text);

/// The shortest text that gives this number back.
std::string shortest(double value);

/// The candidates that a mistyped word may have meant, likeliest first, at most three; in any case.
std::vector<std::string> nearWords(std::string_view word, const std::vector<std::string>& candidates);

std::string join(const std::vector<std::string>& words, std::string_view separator);

}  // namespace Zantrix::Cli
