// The command over many files: how much faster several threads are, what a file costs beyond its audio, and the memory
// that it takes. Rows go nowhere, so that disks do not count.

#include "BenchAudio.h"
#include "CommandRunner.h"
#include "FeatureLists.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace Zantrix::Bench;

constexpr std::size_t c_uiFiles = 200;
constexpr std::size_t c_uiSeconds = 30;

constexpr std::size_t c_uiShortFiles = 5000;  // of a second

// A list of one file many times: all of it is in the cache of the system.
std::string listOf(std::size_t count, std::size_t seconds) {
    const std::string path = temporaryFile(std::to_string(count) + "x" + std::to_string(seconds) + ".txt");
    std::ofstream list(path);
    for (std::size_t i = 0; i < count; ++i) {
        list << audioFile(seconds) << '\n';
    }
    return path;
}

CommandUsage runOver(const std::vector<std::string>& inputs, const Names& features, const std::string& jobs) {
    std::vector<std::string> arguments = {MURVANE_COMMAND, "features", "--jobs", jobs, "--output", "/dev/null"};
    arguments.insert(arguments.end(), inputs.begin(), inputs.end());
    arguments.push_back("--feature");
    arguments.insert(arguments.end(), features.begin(), features.end());
    return runCommand(arguments);
}

using Measured = double (*)(const CommandUsage& usage);

void add(const std::string& name, const std::string& counter, Measured measured,
         const std::function<CommandUsage()>& run) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     CommandUsage usage;
                                     for (auto _ : state) {
                                         usage = run();
                                         state.SetIterationTime(usage.elapsedSeconds);
                                     }
                                     if (usage.status != 0) {
                                         state.SkipWithError("the command failed");
                                         return;
                                     }
                                     state.counters[counter] = measured(usage);
                                 })
        ->UseManualTime()
        ->Iterations(1);
}

double elapsed(const CommandUsage& usage) {
    return usage.elapsedSeconds;
}

double processorSeconds(const CommandUsage& usage) {
    return usage.cpuSeconds;
}

double peak(const CommandUsage& usage) {
    return usage.peakRssBytes;
}

void addJobs(const std::string& rows, const Names& features) {
    for (const char* jobs : {"1", "2"}) {
        add("batch/" + rows + '/' + jobs, "elapsed_seconds", elapsed, [=] {
            return runOver({"--audioset", listOf(c_uiFiles, c_uiSeconds)}, features, jobs);
        });
    }
}

const bool registered = [] {
    addJobs("spectra and 3 values", c_vThreeOfSpectrum);
    addJobs("4 values", c_vThreeNarrow);
    add(
        "file/many", "processor_seconds_per_file",
        [](const CommandUsage& usage) { return processorSeconds(usage) / c_uiShortFiles; },
        [] {
            return runOver({"--audioset", listOf(c_uiShortFiles, 1)}, c_vThreeNarrow, "1");
        });
    add(
        "file/one", "processor_seconds_per_file",
        [](const CommandUsage& usage) { return processorSeconds(usage) / c_uiShortFiles; },
        [] { return runOver({audioFile(c_uiShortFiles)}, c_vThreeNarrow, "1"); });
    for (const std::size_t count : {10, 10000}) {
        add("memory/csv, " + std::to_string(count) + " files of a second, 2 jobs", "peak_rss_bytes", peak, [=] {
            return runOver({"--audioset", listOf(count, 1)}, {"SPECTRUM100HZ"}, "2");
        });
    }
    return true;
}();

}  // namespace
