#pragma once

#include <string>
#include <sys/wait.h>
#include <unistd.h>

/// The user, and the group, without privileges.
inline constexpr uid_t c_uiNobody = 65534;

/// Makes a process that runs as root, if it does, one without privileges.
inline bool dropPrivileges() {
    return ::geteuid() != 0 || (::setresgid(c_uiNobody, c_uiNobody, c_uiNobody) == 0 &&
                                ::setresuid(c_uiNobody, c_uiNobody, c_uiNobody) == 0);
}

/// Runs some work in a process without privileges, for which permissions mean something even when the tests run as
/// root. The work tells what went wrong, or nothing; so does this.
template <typename Work>
std::string asUser(const Work& work) {
    int ends[2] = {};
    if (::pipe(ends) != 0) {
        return "no pipe";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string result = dropPrivileges() ? work() : "privileges cannot be dropped";
        const ssize_t written = ::write(ends[1], result.data(), result.size());
        ::_exit(written == static_cast<ssize_t>(result.size()) ? 0 : 1);
    }
    ::close(ends[1]);
    std::string result;
    char part[256];
    for (ssize_t size = 0; (size = ::read(ends[0], part, sizeof(part))) > 0;) {
        result.append(part, static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (child < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        result += " (the process died)";
    }
    return result;
}

/// Makes a file or a folder the property of the user of `asUser`.
inline void giveToUser(const std::string& path) {
    if (::geteuid() == 0) {
        static_cast<void>(::chown(path.c_str(), c_uiNobody, c_uiNobody) == 0);
    }
}
