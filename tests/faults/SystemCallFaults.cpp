#include "SystemCallFaults.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace faults {

namespace {

[[noreturn]] void runTraced(const std::function<int()>& work) {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        ::_exit(126);
    }
    ::raise(SIGSTOP);
    int exitCode = 125;
    try {
        exitCode = work();
    } catch (...) {  // of memory, say; what matters is what is left on disk
    }
    ::_exit(exitCode);
}

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

int waitFor(pid_t child) {
    int status = 0;
    require(::waitpid(child, &status, 0) == child, "the process is gone");
    return status;
}

// Lets the process run to the next stop, before or after a system call, or to its end; signals reach it.
int resume(pid_t child) {
    for (long signal = 0;;) {
        require(::ptrace(PTRACE_SYSCALL, child, nullptr, signal) == 0, "the process cannot be resumed");
        const int status = waitFor(child);
        if (!WIFSTOPPED(status) || WSTOPSIG(status) == (SIGTRAP | 0x80)) {
            return status;
        }
        signal = WSTOPSIG(status);
    }
}

Outcome ended(int status, Outcome outcome) {
    if (WIFEXITED(status)) {
        outcome.exitCode = WEXITSTATUS(status);
    }
    return outcome;
}

user_regs_struct registersOf(pid_t child) {
    user_regs_struct registers{};
    require(::ptrace(PTRACE_GETREGS, child, nullptr, &registers) == 0, "the registers cannot be read");
    return registers;
}

void setRegisters(pid_t child, user_regs_struct registers) {
    require(::ptrace(PTRACE_SETREGS, child, nullptr, &registers) == 0, "the registers cannot be set");
}

}  // namespace

Outcome runWithFault(const std::function<int()>& work, unsigned place, const Fault& fault) {
    const pid_t child = ::fork();
    require(child >= 0, "no process can be made");
    if (child == 0) {
        runTraced(work);
    }
    int status = waitFor(child);
    require(WIFSTOPPED(status), "the process cannot be traced");
    require(::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD) == 0,
            "the process cannot be traced");

    Outcome outcome;
    for (unsigned call = 0;; ++call) {
        status = resume(child);  // before a system call
        if (!WIFSTOPPED(status)) {
            return ended(status, outcome);
        }
        user_regs_struct registers = registersOf(child);
        const bool isLast = registers.orig_rax == SYS_exit_group;
        const bool isReached = call == place && !isLast;
        outcome.isReached = outcome.isReached || isReached;
        // brk returns no error numbers, but the end of the heap: anything else is taken for one.
        const bool isFaulty = isReached && !(fault.error && registers.orig_rax == SYS_brk);
        if (isFaulty) {
            outcome.systemCall = std::to_string(registers.orig_rax);
            if (!fault.error) {
                ::kill(child, SIGKILL);
                while (!WIFSIGNALED(status)) {
                    status = waitFor(child);
                }
                return outcome;
            }
            registers.orig_rax = static_cast<unsigned long long>(-1);  // no such call: it is not made
            setRegisters(child, registers);
        }
        status = resume(child);  // after it
        if (!WIFSTOPPED(status)) {
            return ended(status, outcome);
        }
        if (isFaulty) {
            registers = registersOf(child);
            registers.rax = static_cast<unsigned long long>(-static_cast<long long>(*fault.error));
            setRegisters(child, registers);
        }
    }
}

}  // namespace faults
