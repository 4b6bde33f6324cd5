#include <murvane/core/FileReplacement.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Zantrix {

namespace {

constexpr const char* c_szAccessList = "system.posix_acl_access";

// Where a path leads once its links are followed; also when the last link points to nothing yet.
std::string followLinks(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path target(path);
    for (int depth = 0; depth < 40 && fs::is_symlink(fs::symlink_status(target, error)); ++depth) {
        const fs::path next = fs::read_symlink(target, error);
        if (error) {
            break;
        }
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    return target.string();
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The path, its last name cut where it is too long to have an ending of ours added.
std::string withRoomInName(const std::string& path) {
    constexpr std::size_t longest = NAME_MAX - 32;
    const std::size_t name = path.rfind('/') + 1;  // 0 without a folder
    return path.size() - name > longest ? path.substr(0, name + longest) : path;
}

// A rename is only safe on disk once its folder is.
void flushFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

// Calls `writeSome`, which may write a part or be interrupted, until all is written; false, with errno set, when it
// fails.
template <typename WriteSome>
bool writeWhole(const void* bytes, std::size_t size, WriteSome writeSome) {
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t written = writeSome(next, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

// What other programs and people attached to a file, and the list of who may use it. The rest is the system's own,
// which gives a new file what is due to it.
bool isOfUsers(std::string_view attribute) {
    return attribute.starts_with("user.") || attribute == c_szAccessList;
}

bool isSupported(int errorNumber) {
    return errorNumber != EOPNOTSUPP && errorNumber != ENOSYS;
}

bool copyAttribute(const std::string& from, const char* name, int to) {
    const ssize_t size = ::getxattr(from.c_str(), name, nullptr, 0);
    std::string value(static_cast<std::size_t>(std::max<ssize_t>(size, 0)), '\0');
    return size >= 0 && ::getxattr(from.c_str(), name, value.data(), value.size()) == size &&
           ::fsetxattr(to, name, value.data(), value.size(), 0) == 0;
}

// Gives a new file the extended attributes of an old one, and no access list that only its folder hands out.
bool copyAttributes(const std::string& from, int to) {
    const ssize_t size = ::listxattr(from.c_str(), nullptr, 0);
    if (size < 0) {
        return !isSupported(errno);
    }
    std::string names(static_cast<std::size_t>(size), '\0');
    if (::listxattr(from.c_str(), names.data(), names.size()) != size) {
        return false;
    }
    bool hasAccessList = false;
    for (std::size_t start = 0; start < names.size(); start += std::strlen(&names[start]) + 1) {
        const char* szName = &names[start];
        hasAccessList = hasAccessList || std::strcmp(szName, c_szAccessList) == 0;
        if (!copyAttribute(from, szName, to) && isOfUsers(szName)) {
            return false;
        }
    }
    return hasAccessList || ::fremovexattr(to, c_szAccessList) == 0 || errno == ENODATA || !isSupported(errno);
}

bool readAll(int descriptor, std::string& bytes) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        if (count == 0) {
            break;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(done);
    return true;
}

// Asks for the room that a file needs to become so long, before any of its bytes change. Where the file system cannot
// tell, writing will.
bool reserve(int descriptor, std::size_t size) {
    if (size == 0 || ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0) {
        return true;
    }
    return !isSupported(errno);
}

// Makes these bytes the content of the file, on disk.
bool overwrite(int descriptor, const std::string& bytes) {
    const auto writeSome = [&](const char* next, std::size_t rest) {
        return ::pwrite(descriptor, next, rest, next - bytes.data());
    };
    return writeWhole(bytes.data(), bytes.size(), writeSome) &&
           ::ftruncate(descriptor, static_cast<off_t>(bytes.size())) == 0 && ::fsync(descriptor) == 0;
}

}  // namespace

FileReplacement::~FileReplacement() {
    discard();
}

bool FileReplacement::open(const std::string& path, InPlace inPlace) {
    discard();
    m_strError.clear();
    m_strBuffer.clear();
    m_time.reset();
    m_uiSize = 0;
    m_strTarget = followLinks(path);

    struct stat status {};
    const bool exists = ::stat(m_strTarget.c_str(), &status) == 0;
    // Only what simply is not there yet can be made; "" and links in a circle are not.
    if (!exists && (errno != ENOENT || m_strTarget.empty())) {
        return fail(errno);
    }
    if (exists && !S_ISREG(status.st_mode)) {
        if (S_ISDIR(status.st_mode)) {
            return fail(EISDIR);
        }
        m_iDescriptor = ::open(m_strTarget.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_iDescriptor < 0) {
            return fail(errno);
        }
        m_eKind = Kind::Device;
        return true;
    }
    if (exists && ::access(m_strTarget.c_str(), W_OK) != 0) {
        return fail(errno);
    }

    // A replacement of a private file is private from its first moment; a new file gets what the user's mask leaves.
    const mode_t mode = exists ? 0600 : 0666;
    const std::string prefix = withRoomInName(m_strTarget) + ".tmp-" + std::to_string(::getpid()) + "-";
    for (int attempt = 0; m_iDescriptor < 0 && (attempt == 0 || (errno == EEXIST && attempt < 100)); ++attempt) {
        m_strTemporary = prefix + std::to_string(attempt);
        m_iDescriptor = ::open(m_strTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    }
    if (m_iDescriptor >= 0) {
        m_eKind = Kind::Temporary;
        return !exists || adopt(status, inPlace);
    }
    const int error = errno;
    if (exists && inPlace == InPlace::Allowed && (error == EACCES || error == EPERM || error == EROFS)) {
        m_eKind = Kind::Buffer;
        return true;
    }
    return fail(error);
}

// Makes the temporary file what the target is: whose it is, who may use it, what is attached to it.
bool FileReplacement::adopt(const struct stat& target, InPlace inPlace) {
    struct stat own {};
    const bool isOwnersOwn =
        (::fstat(m_iDescriptor, &own) == 0 && own.st_uid == target.st_uid && own.st_gid == target.st_gid) ||
        ::fchown(m_iDescriptor, target.st_uid, target.st_gid) == 0;
    if (!(isOwnersOwn && copyAttributes(m_strTarget, m_iDescriptor)) && inPlace == InPlace::Allowed) {
        // Another file in its place would take it away from its owner, or from those who may use it.
        discard();
        m_eKind = Kind::Buffer;
        return true;
    }
    // The mode comes last, as changing the owner clears bits. Those that lend an owner's rights go to no other owner.
    return ::fchmod(m_iDescriptor, target.st_mode & (isOwnersOwn ? 07777 : 0777)) == 0 || fail(errno);
}

bool FileReplacement::write(const void* bytes, std::size_t size) {
    if (m_eKind == Kind::Buffer) {
        m_strBuffer.append(static_cast<const char*>(bytes), size);
    } else if (!append(bytes, size)) {
        return false;
    }
    m_uiSize += size;
    return true;
}

bool FileReplacement::writeAt(std::uint64_t offset, const void* bytes, std::size_t size) {
    if (!isSeekable()) {
        return fail(ESPIPE);
    }
    if (offset > m_uiSize || size > m_uiSize - offset) {
        return fail(EINVAL);
    }
    if (m_eKind == Kind::Buffer) {
        m_strBuffer.replace(offset, size, static_cast<const char*>(bytes), size);
        return true;
    }
    const auto writeSome = [&](const char* next, std::size_t rest) {
        return ::pwrite(m_iDescriptor, next, rest,
                        static_cast<off_t>(offset) + (next - static_cast<const char*>(bytes)));
    };
    return writeWhole(bytes, size, writeSome) || fail(errno);
}

bool FileReplacement::truncate(std::uint64_t size) {
    if (!isSeekable()) {
        return fail(ESPIPE);
    }
    if (size >= m_uiSize) {
        return true;
    }
    if (m_eKind == Kind::Buffer) {
        m_strBuffer.resize(size);
    } else if (::ftruncate(m_iDescriptor, static_cast<off_t>(size)) != 0 ||
               ::lseek(m_iDescriptor, static_cast<off_t>(size), SEEK_SET) < 0) {
        return fail(errno);
    }
    m_uiSize = size;
    return true;
}

bool FileReplacement::commit() {
    if (m_eKind == Kind::Buffer) {
        return overwriteTarget();
    }
    applyTime();
    if (m_eKind != Kind::Device && ::fsync(m_iDescriptor) != 0) {
        return fail(errno);
    }
    const int descriptor = m_iDescriptor;
    m_iDescriptor = -1;
    if (::close(descriptor) != 0 && errno != EINTR) {
        return fail(errno);
    }
    if (m_eKind == Kind::Temporary) {
        if (::rename(m_strTemporary.c_str(), m_strTarget.c_str()) != 0) {
            return fail(errno);
        }
        flushFolder(folderOf(m_strTarget));
    }
    m_eKind = Kind::Closed;
    return true;
}

void FileReplacement::applyTime() {
    if (m_eKind != Kind::Device && m_time) {
        const std::timespec times[] = {*m_time, *m_time};
        ::futimens(m_iDescriptor, times);  // at worst it is later than said
    }
}

// Puts the buffer in the target's place; if that fails, its old bytes again.
bool FileReplacement::overwriteTarget() {
    m_iDescriptor = ::open(m_strTarget.c_str(), O_RDWR | O_CLOEXEC);
    std::string old;
    if (m_iDescriptor < 0 || !readAll(m_iDescriptor, old)) {
        return fail(errno);
    }
    if (!reserve(m_iDescriptor, m_strBuffer.size()) || !overwrite(m_iDescriptor, m_strBuffer)) {
        const int error = errno;
        const bool isRestored = overwrite(m_iDescriptor, old);
        const int errorOfRestoring = errno;
        fail(error);
        if (!isRestored) {
            m_strError += std::string("; what the file held could not be put back: ") + std::strerror(errorOfRestoring);
        }
        return false;
    }
    applyTime();
    ::close(m_iDescriptor);  // all is on disk already
    m_iDescriptor = -1;
    m_eKind = Kind::Closed;
    return true;
}

// Writes at the end of the file that is open.
bool FileReplacement::append(const void* bytes, std::size_t size) {
    const auto writeSome = [&](const char* next, std::size_t rest) { return ::write(m_iDescriptor, next, rest); };
    return writeWhole(bytes, size, writeSome) || fail(errno);
}

bool FileReplacement::fail(int errorNumber) {
    m_strError = std::strerror(errorNumber);
    discard();
    return false;
}

void FileReplacement::discard() noexcept {
    if (m_iDescriptor >= 0) {
        ::close(m_iDescriptor);
        m_iDescriptor = -1;
    }
    if (m_eKind == Kind::Temporary) {
        ::unlink(m_strTemporary.c_str());
    }
    m_eKind = Kind::Closed;
}

}  // namespace Zantrix
