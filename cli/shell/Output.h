#pragma once

#include <murvane/core/FileReplacement.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// What stands for standard output in place of a path.
inline constexpr const char* c_szStandardOutput = "-";

/// Where results go: standard output, or a file that appears only when it is whole. Either is written in large pieces.
///
/// After a failed operation `getError()` tells why, and all later ones fail as well.
class Output {
public:
    Output();

    /// Starts the output.
    ///
    /// @param path  a file to replace, or a device or pipe to write to; "" and "-" are standard output
    bool open(const std::string& path);

    bool write(const void* bytes, std::size_t size);

    /// The number of bytes taken so far.
    std::uint64_t position() const { return m_uiFlushed + m_uiFilled; }

    /// Forgets everything behind a former `position()`; false, without an error, when that has left already.
    bool withdraw(std::uint64_t position);

    /// Replaces bytes written before; for files only.
    bool overwrite(std::uint64_t position, const void* bytes, std::size_t size);

    /// Whether `withdraw` always works and `overwrite` does.
    bool isFile() const { return !m_strPath.empty() && m_file.isSeekable(); }

    bool flush();

    /// The time of modification that a file is to have; to be called before `commit`, when all is written.
    void setTime(const std::timespec& time) { m_time = time; }

    /// Ends the output; only now does a file appear.
    bool commit();

    /// Ends the output unfinished: a file does not appear; what was taken for standard output still goes there, so that
    /// it ends with a whole line.
    void abandon();

    const std::string& getError() const { return m_strError; }

    /// Whether writing to standard output failed, through any object, because nobody reads it any more. That is no
    /// error worth a message: `... | head` does it.
    static bool hasReaderGone();

    /// The error as a message.
    std::string describeError() const;

private:
    bool send(const char* bytes, std::size_t size);
    bool fail(std::string error);

    std::string m_strPath;  // empty: standard output
    FileReplacement m_file;
    std::vector<char> m_vBuffer;
    std::size_t m_uiFilled = 0;
    std::uint64_t m_uiFlushed = 0;
    std::optional<std::timespec> m_time;
    std::string m_strError;
};

}  // namespace Zantrix::Cli
