#pragma once

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

/// The subcommands, and what they tell the shell.
namespace Zantrix::Cli {

enum ExitCode : int {
    AllDone = 0,
    SomeFailed = 1,  ///< some input, or the output, failed; every other input was done
    WrongUsage = 2,  ///< nothing was done
    Interrupted = 130,
    ReaderGone = 141  ///< as of a program that SIGPIPE ends: who read standard output wants no more, and no message
};

/// Wrong usage, found before anything is done. The text may have several lines.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Tells of wrong usage, and where help is.
///
/// @param command  the words behind the program's name, such as "annotations add"
inline ExitCode tellWrongUsage(const UsageError& error, const std::string& command) {
    std::cerr << "murvane-audio: " << error.what() << "\nTry 'murvane-audio " << command << " --help'.\n";
    return WrongUsage;
}

/// Runs one subcommand with the arguments that follow its name.
///
/// @return an `ExitCode`
/// @throw UsageError for wrong usage
int runAnnotations(const std::vector<std::string>& arguments);
int runEvaluate(const std::vector<std::string>& arguments);
int runFeatures(const std::vector<std::string>& arguments);
int runInfo(const std::vector<std::string>& arguments);
int runList(const std::vector<std::string>& arguments);
int runMerge(const std::vector<std::string>& arguments);

}  // namespace Zantrix::Cli
