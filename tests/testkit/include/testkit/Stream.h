#pragma once

#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace testkit {

/// A named pipe that delivers some bytes to the first reader and then ends: a file that cannot seek. The bytes must
/// fit a pipe (64 KiB).
class Stream {
public:
    Stream(const std::string& path, const std::string& bytes) : m_path(path) {
        if (::mkfifo(path.c_str(), 0600) != 0) {
            throw std::runtime_error("cannot make a pipe " + path);
        }
        m_writer = std::thread([path, bytes] {
            // A reader that leaves early is no reason to end the program.
            sigset_t brokenPipe;
            ::sigemptyset(&brokenPipe);
            ::sigaddset(&brokenPipe, SIGPIPE);
            ::pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
            const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
            const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
            static_cast<void>(written);
            ::close(descriptor);
        });
    }

    ~Stream() {
        // Lets a writer go that no reader ever came for.
        const int descriptor = ::open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        m_writer.join();
        ::close(descriptor);
    }

    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

private:
    std::string m_path;
    std::thread m_writer;
};

}  // namespace testkit
