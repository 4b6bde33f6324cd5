#include "PhaseList.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace CallProgress {

std::optional<std::vector<Phase>> readPhases(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::vector<Phase> phases;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        Phase phase;
        char comma = '\0';
        if (!std::getline(fields, phase.name, ',') || !(fields >> phase.start >> comma >> phase.stop)) {
            return {};
        }
        phases.push_back(phase);
    }
    if (!file.eof() || phases.empty()) {
        return {};
    }
    return phases;
}

void printPhases(const std::vector<Phase>& phases) {
    std::printf("%8s %8s  %s\n", "start", "stop", "phase");
    for (const Phase& phase : phases) {
        std::printf("%8.3f %8.3f  %s\n", phase.start, phase.stop, phase.name.c_str());
    }
}

void printBeside(const std::vector<Phase>& truth, const std::vector<Phase>& found, double tolerance) {
    std::vector<bool> isTaken(found.size(), false);
    std::size_t count = 0;
    double largest = 0.0;
    std::size_t begin = 0;  // both lists are in order of time: what starts too early for one phase does for the next
    std::printf("%8s %8s %8s %8s %8s  %s\n", "start", "found", "off", "stop", "found", "phase");
    for (const Phase& phase : truth) {
        while (begin < found.size() && found[begin].start < phase.start - tolerance) {
            ++begin;
        }
        std::size_t best = found.size();
        for (std::size_t i = begin; i < found.size() && found[i].start <= phase.start + tolerance; ++i) {
            const bool isNearer = best == found.size() ||
                                  std::fabs(found[i].start - phase.start) < std::fabs(found[best].start - phase.start);
            if (!isTaken[i] && found[i].name == phase.name && isNearer) {
                best = i;
            }
        }
        if (best == found.size()) {
            std::printf("%8.3f %8s %8s %8.3f %8s  %s\n", phase.start, "-", "-", phase.stop, "-", phase.name.c_str());
            continue;
        }
        isTaken[best] = true;
        ++count;
        const double off = found[best].start - phase.start;
        largest = std::max(largest, std::fabs(off));
        std::printf("%8.3f %8.3f %8.3f %8.3f %8.3f  %s\n", phase.start, found[best].start, off, phase.stop,
                    found[best].stop, phase.name.c_str());
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (!isTaken[i]) {
            std::printf("%8s %8.3f %8s %8s %8.3f  %s\n", "-", found[i].start, "-", "-", found[i].stop,
                        found[i].name.c_str());
        }
    }
    std::printf("%zu of %zu phases found, %zu others; starts at most %.3f s off\n", count, truth.size(),
                found.size() - count, largest);
}

}  // namespace CallProgress
