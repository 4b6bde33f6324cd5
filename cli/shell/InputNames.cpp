#include "shell/InputNames.h"

#include "Command.h"
#include "shell/AudioKind.h"
#include "shell/Digest.h"
#include "shell/Interrupt.h"

#include <murvane/audio/batch/AudioSetParser.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szStandardInput = "-";

constexpr std::size_t c_uiBlockSize = std::size_t(1) << 20;

// Longer lines are not names of files but something else, which need not be in memory to be told so.
constexpr std::size_t c_uiMaxLength = std::size_t(2) * PATH_MAX;

// Some editors write it in front of a text.
constexpr std::string_view c_strByteOrderMark = "\xef\xbb\xbf";

// Cuts what comes in pieces of any size into lines.
template <typename Take>
class LineCutter {
public:
    explicit LineCutter(Take take) : m_take(take) {}

    void add(std::string_view bytes) {
        for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
            append(bytes.substr(0, end));
            finish();
            bytes.remove_prefix(end + 1);
        }
        append(bytes);
    }

    void finish() {
        if (std::exchange(m_bIsFirst, false) && m_strLine.starts_with(c_strByteOrderMark)) {
            m_strLine.erase(0, c_strByteOrderMark.size());
        }
        if (!m_strLine.empty() && m_strLine[0] != '#' && m_strLine != "\r") {
            m_take(m_strLine);
        }
        m_strLine.clear();
    }

private:
    void append(std::string_view bytes) { m_strLine += bytes.substr(0, c_uiMaxLength - m_strLine.size()); }

    Take m_take;
    std::string m_strLine;
    bool m_bIsFirst = true;
};

bool isThere(const std::string& name) {
    return ::access(name.c_str(), F_OK) == 0;
}

// Where an entry of an audio set leads that is there, though it is no file that can be read: what is wrong with it is
// then told as of any other input.
std::optional<std::string> findOther(const std::string& audioSet, const std::string& entry) {
    std::vector<std::filesystem::path> folders = {std::filesystem::path(audioSet).parent_path()};
    if (const char* dataFolder = std::getenv("ZANTRIX_CPA_DATA")) {
        folders.emplace_back(dataFolder);
    }
    for (const std::filesystem::path& folder : folders) {
        std::error_code error;
        const std::filesystem::path place = std::filesystem::canonical(folder / entry, error);
        if (!error) {
            return place.string();
        }
    }
    return std::nullopt;
}

}  // namespace

void addInputOptions(po::options_description& description, InputArguments& arguments) {
    description.add_options()("audioset", po::value(&arguments.audioSet)->value_name("LIST"),
                              "read the files that this list names, too, behind the others");
}

std::size_t countBehindDashes(const std::vector<std::string>& arguments) {
    const auto dashes = std::find(arguments.begin(), arguments.end(), "--");
    return dashes == arguments.end() ? 0 : static_cast<std::size_t>(arguments.end() - dashes) - 1;
}

bool InputNames::gather(const InputArguments& arguments, Diagnostics& diagnostics) {
    const std::size_t operands = arguments.files.size() - std::min(arguments.behindDashes, arguments.files.size());
    if (std::count(arguments.files.begin(), arguments.files.begin() + static_cast<std::ptrdiff_t>(operands),
                   c_szStandardInput) > 1) {
        throw UsageError("'-' is given twice; standard input can be read once");
    }
    bool areRead = true;
    for (std::size_t i = 0; i < arguments.files.size(); ++i) {
        if (i < operands && arguments.files[i] == c_szStandardInput) {
            areRead = addStandardInput(diagnostics) && areRead;
        } else {
            add(arguments.files[i]);
        }
    }
    m_uiAudioSet = size();
    m_strAudioSet = arguments.audioSet;
    return (m_strAudioSet.empty() || addAudioSet(diagnostics)) && areRead;
}

void InputNames::add(std::string_view name) {
    if (m_blocks.empty() || m_blocks.back().size() + name.size() > c_uiBlockSize) {
        m_blocks.emplace_back().reserve(std::max(name.size(), c_uiBlockSize));
    }
    m_names.push_back({static_cast<std::uint32_t>(m_blocks.size() - 1),
                       static_cast<std::uint32_t>(m_blocks.back().size()), static_cast<std::uint32_t>(name.size())});
    m_blocks.back() += name;
}

// Why nothing was added, if so: half a list is none.
std::optional<std::string> InputNames::addLines(int descriptor, const std::function<bool(const std::string&)>& isFile) {
    const std::size_t before = size();
    LineCutter lines([&](std::string_view line) {
        const bool mayEnd = line.ends_with('\r') && !isFile(std::string(line));
        add(mayEnd ? line.substr(0, line.size() - 1) : line);
    });
    std::array<char, 65536> piece{};
    ssize_t count = 0;
    bool isFirst = true;
    do {
        count = ::read(descriptor, piece.data(), piece.size());
        const std::string_view bytes(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (const char* kind = std::exchange(isFirst, false) ? audioKindOf(bytes) : nullptr) {
            return std::string("holds ") + kind + " audio instead of names";
        }
        lines.add(bytes);
    } while (!Interrupt::requested() && (count > 0 || (count < 0 && errno == EINTR)));
    lines.finish();
    if (count < 0) {
        m_names.resize(before);
        return std::string("cannot be read: ") + std::strerror(errno);
    }
    return std::nullopt;
}

bool InputNames::addStandardInput(Diagnostics& diagnostics) {
    const auto problem = addLines(STDIN_FILENO, isThere);
    if (problem) {
        diagnostics.error("standard input: " + *problem);
        m_unreadable.push_back({c_szStandardInput, *problem});
    }
    return !problem;
}

bool InputNames::addAudioSet(Diagnostics& diagnostics) {
    const std::size_t before = size();
    const int descriptor = ::open(m_strAudioSet.c_str(), O_RDONLY | O_CLOEXEC);
    std::optional<std::string> problem = std::string("cannot be read: ") + std::strerror(errno);
    if (descriptor >= 0) {
        problem = addLines(descriptor, [this](const std::string& name) {
            const QuietLog quiet;
            return findEntry(name).has_value();
        });
        ::close(descriptor);
    }
    for (std::size_t i = before; !problem && i < size(); ++i) {
        if (at(i).find('\0') != std::string_view::npos) {
            problem = "holds zero bytes, which no name has";
        }
    }
    if (problem) {
        m_names.resize(before);
        diagnostics.beginInput(m_strAudioSet);
        diagnostics.error(*problem);
        diagnostics.endInput();
        m_unreadable.push_back({m_strAudioSet, *std::move(problem)});
        return false;
    }
    return true;
}

ListIdentity InputNames::identity() const {
    std::error_code ignored;
    const std::string folder =
        std::filesystem::absolute(m_strAudioSet, ignored).lexically_normal().parent_path().string() + '/';
    Digest digest;
    for (std::size_t i = 0; i < size(); ++i) {
        const std::string_view name = at(i);
        if (i >= m_uiAudioSet && name.front() != '/') {
            digest.add(folder);
        }
        digest.add(name);
        digest.add({"", 1});  // a zero byte, which no name of a file holds
    }
    return {size(), digest.hex()};
}

void InputNames::keep(std::size_t first, std::size_t end) {
    m_names.erase(m_names.begin() + static_cast<std::ptrdiff_t>(end), m_names.end());
    m_names.erase(m_names.begin(), m_names.begin() + static_cast<std::ptrdiff_t>(first));
    m_uiAudioSet = std::clamp(m_uiAudioSet, first, end) - first;
    std::map<std::size_t, std::string> refused;
    for (auto item = m_refused.lower_bound(first); item != m_refused.end() && item->first < end; ++item) {
        refused.emplace_hint(refused.end(), item->first - first, std::move(item->second));
    }
    m_refused.swap(refused);
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        if (isEmpty() || i < m_names.front().block || i > m_names.back().block) {
            std::string().swap(m_blocks[i]);
        }
    }
}

std::string InputNames::given(std::size_t index) const {
    return std::string(at(index));
}

std::string InputNames::teller(std::size_t index) const {
    return index < m_uiAudioSet ? given(index) : m_strAudioSet;
}

std::optional<std::string> InputNames::find(std::size_t index, Diagnostics& diagnostics) const {
    const std::string name = given(index);
    if (name.find('\0') != std::string::npos) {
        diagnostics.error("a name with a zero byte leads to no file");
        return std::nullopt;
    }
    return find(index);
}

std::optional<std::string> InputNames::findQuietly(std::size_t index) const {
    const QuietLog quiet;
    return find(index);
}

std::string InputNames::name(std::size_t index) const {
    return findQuietly(index).value_or(given(index));
}

void InputNames::refuseToOverwrite(const OutputPlaces& outputs) const {
    if (!outputs.replaceAny()) {
        return;
    }
    outputs.refuseToReplace(m_strAudioSet);
    for (std::size_t i = 0; i < size(); ++i) {
        outputs.refuseToReplace(findQuietly(i).value_or(""));
    }
    outputs.refuseToReplaceAudio();
}

void InputNames::refuseToOverwrite(const std::vector<std::string>& outputs) const {
    OutputPlaces places;
    std::for_each(outputs.begin(), outputs.end(), [&](const std::string& output) { places.add(output); });
    refuseToOverwrite(places);
}

const std::string* InputNames::refusal(std::size_t index) const {
    const auto found = m_refused.find(index);
    return found == m_refused.end() ? nullptr : &found->second;
}

std::optional<std::string> InputNames::find(std::size_t index) const {
    const std::string name = given(index);
    if (index < m_uiAudioSet) {
        return name;
    }
    {
        const QuietLog quiet;
        if (auto file = findEntry(name)) {
            return file;
        }
    }
    auto other = findOther(m_strAudioSet, name);
    return other ? other : findEntry(name);  // which now tells why there is none
}

std::optional<std::string> InputNames::findEntry(const std::string& name) const {
    std::string file;
    const bool isFound = Audio::AudioSetParser::findAudioFile(m_strAudioSet.c_str(), name.c_str(), file);
    return isFound ? std::optional(file) : std::nullopt;
}

std::string_view InputNames::at(std::size_t index) const {
    const Name& name = m_names[index];
    return std::string_view(m_blocks[name.block]).substr(name.offset, name.length);
}

}  // namespace Zantrix::Cli
