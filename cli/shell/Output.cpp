#include "shell/Output.h"

#include "shell/Interrupt.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

constexpr std::size_t c_uiBufferSize = std::size_t(256) * 1024;

std::atomic<bool> g_readerGone = false;

// Waits until somebody takes bytes; false when nobody does within the time.
bool waitForReader(int milliseconds) {
    struct pollfd waiting = {STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
}

// 0, or the number of the error. Once the user has asked to stop, only what does not block is sent.
int sendToStandardOutput(const char* bytes, std::size_t size) {
    while (size > 0) {
        const bool isLast = Interrupt::requested();
        if (isLast && !waitForReader(100)) {
            return EINTR;
        }
        const ssize_t written = ::write(STDOUT_FILENO, bytes, isLast ? std::min<std::size_t>(size, PIPE_BUF) : size);
        if (written >= 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            waitForReader(1000);  // somebody made the pipe non-blocking
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

Output::Output() : m_vBuffer(c_uiBufferSize) {}

bool Output::open(const std::string& path) {
    m_strPath = path == c_szStandardOutput ? "" : path;
    return m_strPath.empty() || m_file.open(path) || fail(m_file.getError());
}

bool Output::write(const void* bytes, std::size_t size) {
    if (m_vBuffer.size() - m_uiFilled < size && !flush()) {
        return false;
    }
    if (m_vBuffer.size() < size) {
        m_uiFlushed += size;
        return send(static_cast<const char*>(bytes), size);
    }
    std::memcpy(m_vBuffer.data() + m_uiFilled, bytes, size);
    m_uiFilled += size;
    return m_strError.empty();
}

bool Output::withdraw(std::uint64_t position) {
    if (position >= m_uiFlushed) {
        m_uiFilled = static_cast<std::size_t>(position - m_uiFlushed);
        return true;
    }
    if (!isFile() || !m_strError.empty()) {
        return false;
    }
    m_uiFilled = 0;
    m_uiFlushed = position;
    return m_file.truncate(position) || fail(m_file.getError());
}

bool Output::overwrite(std::uint64_t position, const void* bytes, std::size_t size) {
    return flush() && (m_file.writeAt(position, bytes, size) || fail(m_file.getError()));
}

bool Output::flush() {
    const bool sent = send(m_vBuffer.data(), m_uiFilled);
    m_uiFlushed += m_uiFilled;
    m_uiFilled = 0;
    return sent;
}

bool Output::commit() {
    if (!flush()) {
        return false;
    }
    if (m_time) {
        m_file.setTime(*m_time);
    }
    return m_strPath.empty() || m_file.commit() || fail(m_file.getError());
}

void Output::abandon() {
    if (m_strPath.empty()) {
        flush();
    }
}

bool Output::hasReaderGone() {
    return g_readerGone;
}

std::string Output::describeError() const {
    return "cannot write " + (m_strPath.empty() ? "standard output" : m_strPath) + ": " + m_strError;
}

bool Output::send(const char* bytes, std::size_t size) {
    if (!m_strError.empty()) {
        return false;
    }
    if (!m_strPath.empty()) {
        return m_file.write(bytes, size) || fail(m_file.getError());
    }
    const int error = sendToStandardOutput(bytes, size);
    if (error == EPIPE) {
        g_readerGone = true;
    }
    return error == 0 || fail(error == EPIPE ? "its reader has gone" : std::strerror(error));
}

bool Output::fail(std::string error) {
    m_strError = error.empty() ? "unknown error" : std::move(error);
    return false;
}

}  // namespace Zantrix::Cli
