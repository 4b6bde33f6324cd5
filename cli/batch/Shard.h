#pragma once

#include <cstdint>
#include <string>

namespace Zantrix::Cli {

/// One of several parts, nearly alike in size, of a list: a run of its positions. Every position is in exactly one
/// part; when there are more parts than positions, some are empty.
struct Shard {
    std::uint64_t index = 1;  ///< from 1 to `count`
    std::uint64_t count = 1;

    /// The first of `size` positions, from 0, that belong to the part.
    std::uint64_t first(std::uint64_t size) const { return share(size, index - 1); }

    /// The one behind the last of them.
    std::uint64_t end(std::uint64_t size) const { return share(size, index); }

    /// "2/3".
    std::string text() const { return std::to_string(index) + '/' + std::to_string(count); }

    bool operator==(const Shard&) const = default;

private:
    // size * parts / count, rounded down, without the product, which may be too large.
    std::uint64_t share(std::uint64_t size, std::uint64_t parts) const {
        return size / count * parts + size % count * parts / count;
    }
};

/// @throw UsageError  when the text is not "I/N" with I from 1 to N and N at most a million
Shard parseShard(const std::string& text);

}  // namespace Zantrix::Cli
