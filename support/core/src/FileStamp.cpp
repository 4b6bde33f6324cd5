#include <murvane/core/FileStamp.h>

#include <sys/stat.h>

namespace Zantrix {

FileStamp FileStamp::of(const std::string& path) {
    FileStamp stamp;
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        stamp.m_uiDevice = status.st_dev;
        stamp.m_uiInode = status.st_ino;
        stamp.m_iSize = status.st_size;
        stamp.m_iSeconds = status.st_mtim.tv_sec;
        stamp.m_iNanoseconds = status.st_mtim.tv_nsec;
    }
    return stamp;
}

}  // namespace Zantrix
