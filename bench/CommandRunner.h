#pragma once

#include <string>
#include <vector>

/// Runs commands and tells what they used.
namespace Zantrix::Bench {

struct CommandUsage {
    int status = -1;          ///< 0: done
    double cpuSeconds = 0.0;  ///< user and system, of all of its threads
    double elapsedSeconds = 0.0;
    double peakRssBytes = 0.0;  ///< the most memory that it held
};

/// To be called first of all, while the program is still small: a command starts as a copy of the process that starts
/// it, and the size of that copy counts as memory of the command. So a process that stays small starts them.
void startCommandRunner();

/// Runs a command, what it prints discarded, and waits for it.
CommandUsage runCommand(const std::vector<std::string>& arguments);

/// The same of this process so far, in seconds.
double processorTime();

}  // namespace Zantrix::Bench
