#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace Zantrix::IFF {

/// Appends what is left of a stream to `bytes`, which hold its beginning, in steps: memory grows with what really
/// comes, not with what a header or a seekable stream promises.
///
/// @param maxBytes  of beginning and rest together
/// @param error     set when the result is false: the stream reported an error, or there are more bytes
bool readRest(std::istream& source, std::uint64_t maxBytes, std::string& bytes, std::string& error);

}  // namespace Zantrix::IFF
