#pragma once

#include <murvane/core/Export.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

struct stat;

namespace Zantrix {

/// Writes a file that appears only when it is whole: readers see the old file or the new one, never a part.
///
/// 1. `open` makes a temporary file beside the target, with the target's owner, mode, access list and other extended
///    attributes.
/// 2. `write` and `writeAt` fill it.
/// 3. `commit` flushes it to disk and renames it over the target. Other hard links of the target keep the old file.
///    Destruction without `commit` removes the temporary and leaves the target as it was.
///
/// A link is followed: what it points to is replaced. Devices and pipes are written directly, as there is
/// nothing to replace.
///
/// A file in a folder that takes no temporary, or one whose owner, group or access list a new file cannot be given, is
/// overwritten, if `InPlace::Allowed`: the bytes are kept in memory until `commit`, which asks for all the room first
/// and puts the old bytes back when something fails. Readers may see a part then, and a process that is killed
/// meanwhile leaves one. With `InPlace::Refused` the new file gets what it can be given.
///
/// Every operation returns false on failure; `getError()` then tells why, in words. After a failure only
/// destruction makes sense.
class MURVANE_API FileReplacement {
public:
    enum class InPlace { Refused, Allowed };

    FileReplacement() = default;
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Starts replacing `path`. An existing target must be writable; it need not exist.
    bool open(const std::string& path, InPlace inPlace = InPlace::Refused);

    /// Appends bytes.
    bool write(const void* bytes, std::size_t size);

    /// Overwrites bytes written before, such as a header whose numbers are known only at the end; the place of
    /// the next `write` stays. Fails beyond what was written, and on devices and pipes.
    bool writeAt(std::uint64_t offset, const void* bytes, std::size_t size);

    /// Forgets everything written from `size` on. Fails on devices and pipes.
    bool truncate(std::uint64_t size);

    /// Bytes written so far.
    std::uint64_t size() const { return m_uiSize; }

    /// Whether `writeAt` and `truncate` work: false for devices and pipes.
    bool isSeekable() const { return m_eKind != Kind::Device; }

    /// Says when the file was last modified, once all is written; without it that is when it was. Nothing for devices
    /// and pipes.
    void setTime(const std::timespec& time) { m_time = time; }

    bool commit();

    /// What went wrong, such as "No space left on device"; empty when nothing did.
    const std::string& getError() const { return m_strError; }

private:
    enum class Kind { Closed, Temporary, Device, Buffer };

    bool fail(int errorNumber);
    bool append(const void* bytes, std::size_t size);
    bool overwriteTarget();
    void applyTime();
    bool adopt(const struct stat& target, InPlace inPlace);
    void discard() noexcept;

    Kind m_eKind = Kind::Closed;
    int m_iDescriptor = -1;
    std::uint64_t m_uiSize = 0;
    std::string m_strTarget;     // links resolved
    std::string m_strTemporary;  // of Kind::Temporary
    std::string m_strBuffer;     // of Kind::Buffer
    std::optional<std::timespec> m_time;
    std::string m_strError;
};

}  // namespace Zantrix
