#include "batch/Shard.h"

#include "Command.h"

#include <charconv>

namespace Zantrix::Cli {

namespace {

// So that products of two such numbers are far from the largest.
constexpr std::uint64_t c_uiMaxCount = 1000000;

}  // namespace

Shard parseShard(const std::string& text) {
    Shard shard;
    const char* const end = text.data() + text.size();
    const auto [slash, indexError] = std::from_chars(text.data(), end, shard.index);
    if (indexError == std::errc() && slash != end && *slash == '/') {
        const auto [rest, countError] = std::from_chars(slash + 1, end, shard.count);
        if (countError == std::errc() && rest == end && shard.index >= 1 && shard.index <= shard.count &&
            shard.count <= c_uiMaxCount) {
            return shard;
        }
    }
    throw UsageError("the shard '" + text +
                     "' is refused; it must be I/N, such as 2/3, with I from 1 to N and N at most " +
                     std::to_string(c_uiMaxCount));
}

}  // namespace Zantrix::Cli
