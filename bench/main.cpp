// Runs the benchmarks: every one is registered by the source that it stands in.

#include "CommandRunner.h"
#include "features/SpectrumKernels.h"

#include <benchmark/benchmark.h>
#include <log4cplus/logger.h>

#include <fstream>
#include <string>
#include <sys/utsname.h>

namespace {

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

std::string systemName() {
    utsname system{};
    ::uname(&system);
    return std::string(system.sysname) + ' ' + system.release + ' ' + system.machine;
}

}  // namespace

int main(int argc, char** argv) {
    Zantrix::Bench::startCommandRunner();
    // As programs run: whoever wants no records below a level says so.
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::AddCustomContext("processor", processorName());
    benchmark::AddCustomContext("system", systemName());
    benchmark::AddCustomContext("compiler", __VERSION__);
    benchmark::AddCustomContext("kernels", Zantrix::Audio::spectrumKernels().front().name);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
