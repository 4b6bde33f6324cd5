#include "CommandRunner.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Zantrix::Bench {

namespace {

int g_iRunner = -1;  // one message there, one message back

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

double secondsOf(const rusage& used) {
    return secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
}

[[noreturn]] void become(const std::string_view message) {
    std::vector<char*> arguments;
    for (std::size_t start = 0; start < message.size(); start = message.find('\0', start) + 1) {
        arguments.push_back(const_cast<char*>(message.data()) + start);
    }
    arguments.push_back(nullptr);
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, STDOUT_FILENO);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
}

CommandUsage run(const std::string_view message) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        become(message);
    }
    CommandUsage usage;
    rusage used{};
    if (pid < 0 || ::wait4(pid, &usage.status, 0, &used) != pid) {
        return usage;
    }
    usage.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    usage.cpuSeconds = secondsOf(used);
    usage.peakRssBytes = 1024.0 * static_cast<double>(used.ru_maxrss);
    return usage;
}

}  // namespace

void startCommandRunner() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::runtime_error("no socket");
    }
    const pid_t pid = ::fork();
    if (pid < 0) {
        throw std::runtime_error("no process");
    }
    if (pid > 0) {
        ::close(ends[1]);
        g_iRunner = ends[0];
        return;
    }
    ::close(ends[0]);
    std::array<char, 4096> message{};
    for (;;) {
        const ssize_t size = ::recv(ends[1], message.data(), message.size(), 0);
        if (size <= 0) {
            ::_exit(0);
        }
        const CommandUsage usage = run({message.data(), static_cast<std::size_t>(size)});
        if (::send(ends[1], &usage, sizeof(usage), MSG_NOSIGNAL) != sizeof(usage)) {
            ::_exit(1);
        }
    }
}

CommandUsage runCommand(const std::vector<std::string>& arguments) {
    std::string message;
    for (const std::string& argument : arguments) {
        message += argument + '\0';
    }
    CommandUsage usage;
    if (::send(g_iRunner, message.data(), message.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(message.size()) ||
        ::recv(g_iRunner, &usage, sizeof(usage), 0) != sizeof(usage)) {
        throw std::runtime_error("the process that runs commands is gone");
    }
    return usage;
}

double processorTime() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return secondsOf(used);
}

}  // namespace Zantrix::Bench
