#include "shell/AudioKind.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

struct Magic {
    std::size_t offset;
    std::string_view bytes;
    const char* kind;
};

constexpr Magic c_magics[] = {
    {0, "RIFF", "RIFF"},   {0, "RIFX", "RIFX"},    {0, "RF64", "RF64"},    {0, "BW64", "BW64"},
    {0, "riff", "Wave64"}, {0, "FORM", "AIFF"},    {0, "fLaC", "FLAC"},    {0, "OggS", "Ogg"},
    {0, ".snd", "AU"},     {0, "dns.", "AU"},      {0, "caff", "CAF"},     {0, "NIST_1A", "NIST SPHERE"},
    {0, "ID3", "MP3"},     {0, "\xff\xfb", "MP3"}, {0, "\xff\xf3", "MP3"}, {0, "\xff\xf2", "MP3"},
    {0, "#!AMR", "AMR"},   {4, "ftyp", "MPEG-4"},
};

// A list may well begin with the name "FORM.wav", but every audio file has bytes at its start that no text has.
bool isTextByte(unsigned char byte) {
    return (byte >= ' ' && byte != 0x7f) || (byte >= '\t' && byte <= '\r');
}

}  // namespace

const char* audioKindOf(std::string_view beginning) {
    beginning = beginning.substr(0, c_uiAudioHead);
    if (std::all_of(beginning.begin(), beginning.end(), isTextByte)) {
        return nullptr;
    }
    for (const Magic& magic : c_magics) {
        if (beginning.size() >= magic.offset && beginning.substr(magic.offset).starts_with(magic.bytes)) {
            return magic.kind;
        }
    }
    return nullptr;
}

const char* audioKindOfFile(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status {};
    std::array<char, c_uiAudioHead> head{};
    const bool isFile = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const ssize_t count = isFile ? ::pread(descriptor, head.data(), head.size(), 0) : 0;
    ::close(descriptor);
    return audioKindOf({head.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))});
}

}  // namespace Zantrix::Cli
