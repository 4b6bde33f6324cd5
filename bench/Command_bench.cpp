// The command, as a process of its own: all of its processor time counts, that of starting up included. Beside it a
// bare loop in this process that reads, computes and writes the same rows. And the memory that the command takes.

#include "BenchAudio.h"
#include "CommandRunner.h"
#include "FeatureLists.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Zantrix::Bench;

std::vector<std::string> commandLine(const std::string& audio, const Names& features, const std::string& format,
                                     const std::string& output) {
    std::vector<std::string> arguments = {MURVANE_COMMAND, "features", audio,  "--format",
                                          format,          "--output", output, "--feature"};
    arguments.insert(arguments.end(), features.begin(), features.end());
    return arguments;
}

// A file written in large blocks, without the courtesy of the command's, which appear complete or not at all.
class BareFile {
public:
    explicit BareFile(const std::string& path) : m_pFile(std::fopen(path.c_str(), "wb")), m_vBuffer(1 << 20) {
        std::setbuf(m_pFile, nullptr);
    }
    BareFile(const BareFile&) = delete;
    BareFile& operator=(const BareFile&) = delete;
    ~BareFile() {
        flush();
        std::fclose(m_pFile);
    }

    // Room for so many bytes; `advance` tells how many of them were used.
    char* room(std::size_t size) {
        if (m_vBuffer.size() - m_uiFilled < size) {
            flush();
        }
        return &m_vBuffer[m_uiFilled];
    }
    void advance(const char* end) { m_uiFilled = static_cast<std::size_t>(end - m_vBuffer.data()); }

private:
    void flush() {
        std::fwrite(m_vBuffer.data(), 1, m_uiFilled, m_pFile);
        m_uiFilled = 0;
    }

    std::FILE* m_pFile;
    std::vector<char> m_vBuffer;
    std::size_t m_uiFilled = 0;
};

using WriteRows = std::function<void(const std::string& audio, BareFile& file)>;

template <typename Bare>
WriteRows csvRows(const Bare& bare) {
    return [=](const std::string& audio, BareFile& file) {
        constexpr std::size_t numberLength = 25;  // with its comma
        Bare computer = bare;
        analyseBare(audio, computer, [&](const double* row, std::size_t size, double time) {
            char* out = file.room(audio.size() + 1 + (size + 1) * numberLength);
            out = std::copy(audio.begin(), audio.end(), out);
            *out++ = ',';
            out = std::to_chars(out, out + numberLength, time).ptr;
            for (std::size_t i = 0; i < size; ++i) {
                *out++ = ',';
                out = std::to_chars(out, out + numberLength, row[i]).ptr;
            }
            *out++ = '\n';
            file.advance(out);
        });
    };
}

template <typename Bare>
WriteRows rawRows(const Bare& bare) {
    return [=](const std::string& audio, BareFile& file) {
        Bare computer = bare;
        analyseBare(audio, computer, [&](const double* row, std::size_t size, double) {
            const char* const bytes = reinterpret_cast<const char*>(row);
            file.advance(std::copy_n(bytes, size * sizeof(double), file.room(size * sizeof(double))));
        });
    };
}

struct CommandPair {
    std::string format;
    std::size_t seconds;
    Names features;
    WriteRows writeRows;
    std::optional<bool> areSame;  // not known before the first run

    const std::string& audio() const { return audioFile(seconds); }
};

std::optional<double> runLibrary(const CommandPair& pair, const std::string& output) {
    const CommandUsage usage = runCommand(commandLine(pair.audio(), pair.features, pair.format, output));
    return usage.status == 0 ? std::optional(usage.cpuSeconds) : std::nullopt;
}

std::optional<double> runBare(const CommandPair& pair, const std::string& output) {
    const double start = processorTime();
    {
        BareFile file(output);
        pair.writeRows(pair.audio(), file);
    }
    return processorTime() - start;
}

// The rows behind the head of a table.
std::string rowsOf(const std::string& path, const std::string& format, bool isBare) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (isBare) {
        return bytes;
    }
    constexpr std::size_t npyHead = 128;
    return bytes.substr(format == "csv" ? bytes.find('\n') + 1 : std::min(npyHead, bytes.size()));
}

bool giveTheSame(const CommandPair& pair) {
    const std::string library = temporaryFile("library");
    const std::string bare = temporaryFile("bare");
    if (!runLibrary(pair, library) || !runBare(pair, bare)) {
        return false;
    }
    const std::string rows = rowsOf(library, pair.format, false);
    return !rows.empty() && rows == rowsOf(bare, pair.format, true);
}

void measure(benchmark::State& state, CommandPair& pair,
             std::optional<double> (*run)(const CommandPair&, const std::string&)) {
    if (!pair.areSame) {
        pair.areSame = giveTheSame(pair);
    }
    if (!*pair.areSame) {
        state.SkipWithError("the command and the bare loop write different rows");
        return;
    }
    const std::string output = temporaryFile("output");
    for (auto _ : state) {
        const std::optional<double> seconds = run(pair, output);
        if (!seconds) {
            state.SkipWithError("the command failed");
            return;
        }
        state.SetIterationTime(*seconds);
    }
    state.counters["audio_seconds_per_second"] =
        benchmark::Counter(static_cast<double>(pair.seconds), benchmark::Counter::kIsIterationInvariantRate);
}

void add(const std::string& name, CommandPair pair) {
    const auto pPair = std::make_shared<CommandPair>(std::move(pair));
    const auto addSide = [&](const char* side, auto* run) {
        benchmark::RegisterBenchmark(("command/" + name + side).c_str(),
                                     [=](benchmark::State& state) { measure(state, *pPair, run); })
            ->UseManualTime()
            ->Iterations(1);
    };
    addSide("/library", runLibrary);
    addSide("/bare", runBare);
}

void measureMemory(benchmark::State& state, const std::string& format, std::size_t seconds, const Names& features) {
    CommandUsage usage;
    for (auto _ : state) {
        usage = runCommand(commandLine(audioFile(seconds), features, format, temporaryFile("output")));
        state.SetIterationTime(usage.cpuSeconds);
    }
    if (usage.status != 0) {
        state.SkipWithError("the command failed");
        return;
    }
    state.counters["peak_rss_bytes"] = usage.peakRssBytes;
}

void addMemory(const std::string& format, const Names& features) {
    for (const std::size_t seconds : {60, 3600}) {
        const std::string name = "memory/" + format + ", " + (seconds == 60 ? "1 minute" : "1 hour") + " of audio";
        benchmark::RegisterBenchmark(name.c_str(),
                                     [=](benchmark::State& state) { measureMemory(state, format, seconds, features); })
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(1);
    }
}

const bool registered = [] {
    add("spectra and 3 values to csv", {"csv", 600, c_vThreeOfSpectrum, csvRows(bareThreeOfSpectrum()), {}});
    add("spectra and 3 values to npy", {"npy", 600, c_vThreeOfSpectrum, rawRows(bareThreeOfSpectrum()), {}});
    add("4 values to csv", {"csv", 3600, c_vThreeNarrow, csvRows(bareThreeNarrow()), {}});
    add("4 values to npy", {"npy", 3600, c_vThreeNarrow, rawRows(bareThreeNarrow()), {}});
    addMemory("csv", {"SPECTRUM100HZ"});
    addMemory("npy", {"SPECTRUM100HZ"});
    return true;
}();

}  // namespace
