#pragma once

#include <functional>
#include <optional>
#include <string>

/// Runs work in a process of its own and lets one of its system calls go wrong, whichever is asked for.
namespace faults {

/// What happens at the system call: an error number that it returns without having been made, or death just before
/// it is made.
struct Fault {
    const char* name;
    std::optional<int> error;  // none: death
};

struct Outcome {
    bool isReached = false;       ///< whether the process made that many system calls
    std::optional<int> exitCode;  ///< none if it died
    std::string systemCall;       ///< number of the system call that went wrong
};

/// Runs `work` in a fork of this process, whose exit code is what it returns (125 if it throws), with a fault at
/// one of its system calls.
///
/// @param place  which of them, from 0
Outcome runWithFault(const std::function<int()>& work, unsigned place, const Fault& fault);

}  // namespace faults
