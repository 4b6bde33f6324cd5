// A recording of an hour with few and many annotations: to list them, and to add one more, by the library and by the
// command, which is a process of its own. Beside it `cp` of the same file. An edit is on disk when it returns, so the
// copy is flushed as well.

#include "BenchAudio.h"
#include "CommandRunner.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace Zantrix::Bench;
using Zantrix::Audio::AnnotatedFile;
using Zantrix::Audio::AnnotationImpl;

constexpr std::size_t c_uiSeconds = 3600;

// What is written reads back with an empty annotation in front.
constexpr std::size_t c_uiInFront = 1;

AnnotationImpl tone(double start, double stop) {
    AnnotationImpl annotation;
    annotation.setLabel("AM_440x480");
    annotation.setStartTime(start);
    annotation.setStopTime(stop);
    return annotation;
}

void flushToDisk(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && ::fsync(descriptor) == 0;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!isFlushed) {
        throw std::runtime_error("cannot flush " + path);
    }
}

// The hour with so many annotations of the same length, one after the other; on disk.
const std::string& annotatedFile(std::size_t count) {
    static std::map<std::size_t, std::string> files;
    std::string& path = files[count];
    if (path.empty()) {
        const std::string name = temporaryFile(std::to_string(count) + "-annotations.wav");
        AnnotatedFile file;
        if (!file.loadFile(audioFile(c_uiSeconds))) {
            throw std::runtime_error(file.getError());
        }
        const double length = static_cast<double>(c_uiSeconds) / static_cast<double>(count);
        for (std::size_t i = 0; i < count; ++i) {
            const double start = static_cast<double>(i) * length;
            file.m_vAnnotations.emplace_back(tone(start, start + length / 2).clone());
        }
        if (!file.saveFile(name)) {
            throw std::runtime_error(file.getError());
        }
        path = name;
    }
    return path;
}

std::size_t countListed(const std::string& path) {
    AnnotatedFile file;
    return file.loadFile(path) ? file.m_vAnnotations.size() : 0;
}

// What is measured: `prepare` is not timed, `check` tells after each run whether it did its work.
struct Task {
    std::string target = temporaryFile("edited.wav");
    double commandSeconds = 0.0;  ///< processor time of other processes

    virtual ~Task() = default;
    virtual void prepare(const std::string& source) = 0;
    virtual bool run(const std::string& source) = 0;
    virtual bool check(const std::string& source, std::size_t count) = 0;
};

struct List : Task {
    std::size_t listed = 0;

    void prepare(const std::string&) override {}
    bool run(const std::string& source) override {
        listed = countListed(source);
        return listed > 0;
    }
    bool check(const std::string&, std::size_t count) override { return listed == c_uiInFront + count; }
};

struct Edit : Task {
    void prepare(const std::string& source) override {
        std::filesystem::copy_file(source, target, std::filesystem::copy_options::overwrite_existing);
        flushToDisk(target);
    }
    bool run(const std::string&) override { return AnnotatedFile::addAnnotation(target.c_str(), tone(0.5, 1.0)); }
    bool check(const std::string&, std::size_t count) override {
        return countListed(target) == c_uiInFront + (c_uiInFront + count + 1);
    }
};

/// Runs the command, or `cp`, and keeps what it used.
bool runAs(Task& task, const std::vector<std::string>& arguments) {
    const CommandUsage usage = runCommand(arguments);
    task.commandSeconds = usage.cpuSeconds;
    return usage.status == 0;
}

struct CommandList : Task {
    void prepare(const std::string&) override {}
    bool run(const std::string& source) override {
        return runAs(*this, {MURVANE_COMMAND, "annotations", "list", source});
    }
    // What it prints is discarded while it is measured.
    bool check(const std::string& source, std::size_t count) override {
        constexpr std::size_t header = 1;
        const std::string table = target + ".csv";
        runCommand({MURVANE_COMMAND, "annotations", "list", "--format", "csv", "--output", table, source});
        std::ifstream is(table);
        const auto lines = std::count(std::istreambuf_iterator<char>(is), {}, '\n');
        return static_cast<std::size_t>(lines) == header + count;
    }
};

/// It hides what stands in front of the annotations, and does not write it.
struct CommandEdit : Edit {
    bool run(const std::string&) override {
        return runAs(*this, {MURVANE_COMMAND, "annotations", "add", target, "--label", "AM_440x480", "--start", "0.5",
                             "--stop", "1.0"});
    }
    bool check(const std::string&, std::size_t count) override {
        return countListed(target) == c_uiInFront + count + 1;
    }
};

struct Copy : Task {
    // An edit makes a new file as well.
    void prepare(const std::string&) override { std::filesystem::remove(target); }
    bool run(const std::string& source) override {
        const bool isCopied = runAs(*this, {"/bin/cp", source, target});
        flushToDisk(target);
        return isCopied;
    }
    bool check(const std::string& source, std::size_t) override {
        return std::filesystem::file_size(target) == std::filesystem::file_size(source);
    }
};

template <typename Kind>
void measure(benchmark::State& state, std::size_t count) {
    const std::string& source = annotatedFile(count);
    Kind task;
    double processorSeconds = 0.0;
    double seconds = 0.0;
    for (auto _ : state) {
        task.prepare(source);
        const double startOfProcessor = processorTime();
        const auto start = std::chrono::steady_clock::now();
        const bool isDone = task.run(source);
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        processorSeconds = processorTime() - startOfProcessor + task.commandSeconds;
        state.SetIterationTime(seconds);
        if (!isDone || !task.check(source, count)) {
            state.SkipWithError("it did not do what is measured");
            return;
        }
    }
    state.counters["elapsed_seconds"] = seconds;
    state.counters["processor_seconds"] = processorSeconds;
}

template <typename Kind>
void add(const std::string& name) {
    for (const std::size_t count : {10, 1000, 10000, 100000}) {
        benchmark::RegisterBenchmark(("annotations/" + name + "/" + std::to_string(count)).c_str(),
                                     [=](benchmark::State& state) { measure<Kind>(state, count); })
            ->UseManualTime()
            ->Iterations(1);
    }
}

const bool registered = [] {
    add<List>("list");
    add<Edit>("edit");
    add<CommandList>("command list");
    add<CommandEdit>("command edit");
    add<Copy>("copy");
    return true;
}();

}  // namespace
