#pragma once

#include <murvane/core/Export.h>

#include <cstdint>
#include <string>

namespace Zantrix {

/// Which file a path led to, and in which state: equal stamps mean that nobody replaced or rewrote it in between.
///
/// Rewriting a file to the same size within one tick of the file system's clock goes unnoticed.
class MURVANE_API FileStamp {
public:
    /// The stamp of no file.
    FileStamp() = default;

    /// The stamp of the file that a path leads to, links followed. Only regular files have one: what a device or a
    /// pipe delivers has no state to compare.
    static FileStamp of(const std::string& path);

    bool operator==(const FileStamp&) const = default;

private:
    std::uint64_t m_uiDevice = 0;
    std::uint64_t m_uiInode = 0;
    std::int64_t m_iSize = -1;
    std::int64_t m_iSeconds = 0;  // of the last change of content
    std::int64_t m_iNanoseconds = 0;
};

}  // namespace Zantrix
