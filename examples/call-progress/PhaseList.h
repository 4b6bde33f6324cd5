#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CallProgress {

/// What a recording holds from one time to another, in seconds.
struct Phase {
    std::string name;
    double start = 0.0;
    double stop = 0.0;
};

/// Reads a list with the columns phase, start and stop (seconds), as the sample call's list has them.
///
/// @return nothing when the file cannot be read, or is no such list
std::optional<std::vector<Phase>> readPhases(const std::string& path);

/// Prints one line for each phase.
void printPhases(const std::vector<Phase>& phases);

/// Prints the true phases, and beside each the found one of its name that starts nearest to it; then what was found
/// beyond those, and how many were found.
///
/// @param tolerance  how far off a start may be, in seconds, and still count
void printBeside(const std::vector<Phase>& truth, const std::vector<Phase>& found, double tolerance);

}  // namespace CallProgress
