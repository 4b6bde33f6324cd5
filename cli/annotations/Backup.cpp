#include "annotations/Backup.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Zantrix::Cli {

namespace {

/// Closes a file descriptor at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : m_iNumber(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_iNumber; }
    bool close() {
        const int number = m_iNumber;
        m_iNumber = -1;
        return number < 0 || ::close(number) == 0;
    }

private:
    int m_iNumber;
};

int createNext(const std::string& path, mode_t mode, std::string& name) {
    name = path + ".bak";
    for (unsigned number = 1;; ++number) {
        const int target = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 0777u);
        if (target >= 0 || errno != EEXIST) {
            return target;
        }
        name = path + ".bak." + std::to_string(number);
    }
}

bool writeAll(int target, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(target, bytes, size);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes += written < 0 ? 0 : written;
        size -= written < 0 ? 0 : static_cast<std::size_t>(written);
    }
    return true;
}

bool copyAll(int source, int target) {
    std::vector<char> piece(std::size_t(1) << 16);
    while (true) {
        const ssize_t count = ::read(source, piece.data(), piece.size());
        if (count == 0) {
            return true;
        }
        if (count < 0 ? errno != EINTR : !writeAll(target, piece.data(), static_cast<std::size_t>(count))) {
            return false;
        }
    }
}

}  // namespace

std::string backUp(const std::string& path, std::string& name) {
    const Descriptor source(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (source.get() < 0 || ::fstat(source.get(), &status) != 0) {
        return std::strerror(errno);
    }
    Descriptor target(createNext(path, status.st_mode, name));
    if (target.get() < 0) {
        return std::strerror(errno);
    }
    if (::fchown(target.get(), status.st_uid, status.st_gid) != 0) {
        // Only root may give files away; the copy is the user's then.
    }
    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    if (copyAll(source.get(), target.get()) && ::fchmod(target.get(), status.st_mode & 0777u) == 0 &&
        ::futimens(target.get(), times) == 0 && ::fsync(target.get()) == 0 && target.close()) {
        return {};
    }
    std::string error = std::strerror(errno);
    ::unlink(name.c_str());
    return error;
}

}  // namespace Zantrix::Cli
