#include "features/ArchiveShape.h"

#include <cstdint>
#include <cstring>
#include <regex>
#include <sstream>
#include <vector>

namespace Zantrix::Cli {

namespace {

constexpr std::string_view c_strSignature = "serialization::archive";

// Binary: the length of the signature in eight bytes, the signature, the release of the archive library.
constexpr std::size_t c_uiRelease = 8 + c_strSignature.size();
constexpr std::size_t c_uiReleaseSize = 2;

// What stands between the start of a binary archive and the texts of its list: their number and a version.
constexpr std::size_t c_uiListHead = 8 + 4;

bool isBinaryList(std::string_view bytes, std::string_view empty) {
    const std::size_t start = empty.size() - c_uiListHead;
    constexpr std::size_t behindRelease = c_uiRelease + c_uiReleaseSize;
    if (bytes.size() < empty.size() ||
        bytes.substr(behindRelease, start - behindRelease) != empty.substr(behindRelease, start - behindRelease)) {
        return false;
    }
    const auto number = [&](std::size_t offset) {
        std::uint64_t value = 0;
        std::memcpy(&value, bytes.data() + offset, sizeof(value));
        return value;
    };
    std::size_t offset = empty.size();
    for (std::uint64_t left = number(start); left > 0; --left) {
        if (bytes.size() - offset < 8 || number(offset) > bytes.size() - offset - 8) {
            return false;
        }
        offset += 8 + static_cast<std::size_t>(number(offset));
    }
    return offset == bytes.size();
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// The words are length and text of the signature, the release, and so on; the last two of an empty list are the number
// of texts and a version.
bool isTextList(const std::string& bytes, const std::string& empty) {
    constexpr std::size_t release = 2;
    const std::vector<std::string> expected = wordsOf(empty);
    std::istringstream stream(bytes);
    std::string word;
    for (std::size_t i = 0; i + 2 < expected.size(); ++i) {
        if (!(stream >> word) || (i != release && word != expected[i])) {
            return false;
        }
    }
    std::uint64_t count = 0;
    std::uint64_t version = 0;
    stream >> count >> version;
    for (; stream && count > 0; --count) {
        std::uint64_t length = 0;
        if (!(stream >> length) || length > bytes.size() || stream.get() != ' ') {
            return false;
        }
        word.resize(static_cast<std::size_t>(length));
        stream.read(word.data(), static_cast<std::streamsize>(length));
    }
    // A text may have been cut exactly where the number of its length ended.
    return stream && (stream >> std::ws).eof();
}

bool isXmlList(const std::string& bytes) {
    constexpr std::string_view end = "</boost_serialization>";
    const std::size_t last = bytes.find_last_not_of(" \t\r\n");
    if (last == std::string::npos || last + 1 < end.size() ||
        bytes.compare(last + 1 - end.size(), end.size(), end) != 0) {
        return false;
    }
    // Classes are numbered as they come.
    static const std::regex identifier("class_id[a-z_]*\\s*=\\s*\"([^\"]*)\"");
    std::size_t classes = 0;
    for (std::sregex_iterator it(bytes.begin(), bytes.end(), identifier); it != std::sregex_iterator(); ++it) {
        if ((*it)[1] != std::to_string(classes++)) {
            return false;
        }
    }
    static const std::regex number("<count>\\s*([0-9]{1,9})\\s*</count>");
    std::smatch match;
    return classes > 0 && std::regex_search(bytes, match, number) && std::stoull(match[1]) < bytes.size();
}

}  // namespace

ArchiveFormat findArchiveFormat(std::string_view bytes) {
    if (bytes.rfind("<?xml", 0) == 0) {
        return ArchiveFormat::Xml;
    }
    const auto begins = [&](const std::string& length) {
        return bytes.rfind(length + std::string(c_strSignature), 0) == 0;
    };
    if (begins(std::to_string(c_strSignature.size()) + ' ')) {
        return ArchiveFormat::Text;
    }
    return begins(static_cast<char>(c_strSignature.size()) + std::string(7, '\0')) ? ArchiveFormat::Binary
                                                                                   : ArchiveFormat::None;
}

bool hasShapeOf(ArchiveFormat format, const std::string& bytes, const std::string& empty) {
    switch (format) {
        case ArchiveFormat::Text:
            return isTextList(bytes, empty);
        case ArchiveFormat::Binary:
            return isBinaryList(bytes, empty);
        case ArchiveFormat::Xml:
            return isXmlList(bytes);
        case ArchiveFormat::None:
            break;
    }
    return false;
}

}  // namespace Zantrix::Cli
