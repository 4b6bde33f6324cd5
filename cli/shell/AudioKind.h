#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Audio told from text by how it begins: for files that somebody named by mistake.
namespace Zantrix::Cli {

/// How much of a file `audioKindOf` wants to see.
inline constexpr std::size_t c_uiAudioHead = 4096;

/// What an audio file that begins like this is called, such as "RIFF"; null for what is none of the kinds known here.
/// Text is never taken for audio, whatever its first word is.
const char* audioKindOf(std::string_view beginning);

/// The same of a file; null for what is no regular file, and for one that cannot be read.
const char* audioKindOfFile(const std::string& path);

}  // namespace Zantrix::Cli
