#include "shell/RepairedStream.h"

#include "shell/Interrupt.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace Zantrix::Cli {

namespace {

constexpr std::size_t c_uiRiffSizeOffset = 4;
constexpr std::array<char, 4> c_neverCompleted = {8, 0, 0, 0};  // a RIFF chunk of "WAVE" and no more

bool sendAll(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes += std::max<ssize_t>(written, 0);
        size -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
    return true;
}

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

// Sends a file, and closes both ends.
void sendFile(int file, int pipe) {
    std::vector<char> buffer(std::size_t(64) * 1024);
    ssize_t count = 0;
    bool isFirst = true;
    do {
        count = ::read(file, buffer.data(), buffer.size());
        if (isFirst && count >= static_cast<ssize_t>(c_uiRiffSizeOffset + c_neverCompleted.size())) {
            std::copy(c_neverCompleted.begin(), c_neverCompleted.end(), buffer.begin() + c_uiRiffSizeOffset);
        }
        isFirst = false;
    } while (count > 0 && sendAll(pipe, buffer.data(), static_cast<std::size_t>(count)));
    closeDescriptor(pipe);
    closeDescriptor(file);
}

}  // namespace

RepairedStream::~RepairedStream() {
    // Without our own end, and the reader's, the sender stops as soon as nobody reads any more.
    closeDescriptor(m_pipe[0]);
    if (m_sender.joinable()) {
        m_sender.join();
    }
    closeDescriptor(m_pipe[1]);
    closeDescriptor(m_iFile);
}

bool RepairedStream::start(const std::string& path) {
    m_iFile = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_iFile < 0 || ::pipe2(m_pipe.data(), O_CLOEXEC) != 0) {
        return fail(errno);
    }
    m_strPath = "/dev/fd/" + std::to_string(m_pipe[0]);
    const Interrupt::Shield shield;
    m_sender = std::thread(sendFile, m_iFile, m_pipe[1]);
    m_iFile = -1;
    m_pipe[1] = -1;
    return true;
}

bool RepairedStream::fail(int errorNumber) {
    m_strError = std::strerror(errorNumber);
    return false;
}

}  // namespace Zantrix::Cli
