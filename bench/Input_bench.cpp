// Reading a file, and cutting it into windows. Opening and closing it counts.

#include "BareInput.h"
#include "BenchAudio.h"
#include "Pair.h"

#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioWindowedFileReader.h>

#include <benchmark/benchmark.h>

#include <array>
#include <string>

namespace {

using namespace Zantrix;
using namespace Zantrix::Bench;

constexpr std::size_t c_uiSeconds = 600;

Loop readWithLibrary() {
    return [](Record* pRecord) {
        Audio::AudioFileReader reader;
        reader.setSourceAudioFile(audioFile(c_uiSeconds).c_str());
        Math::DoubleVector chunk;
        while (reader.getNextLinearFrames(chunk)) {
            benchmark::DoNotOptimize(chunk.data());
            record(pRecord, chunk.data(), chunk.size());
        }
    };
}

Loop readWithBareLoop() {
    return [](Record* pRecord) {
        readBare(audioFile(c_uiSeconds), 1024, [&](const double* samples, std::size_t count) {
            benchmark::DoNotOptimize(samples);
            benchmark::ClobberMemory();
            record(pRecord, samples, count);
        });
    };
}

Loop cutWithLibrary(std::size_t windowsPerRead) {
    return [=](Record* pRecord) {
        Audio::WindowedAudioFileReader reader;
        reader.configure({c_uiSampleRate, c_uiWindowMs, c_uiOverlapMs, false});
        reader.setChunkReadFactor(windowsPerRead);
        reader.setSourceAudioFile(audioFile(c_uiSeconds).c_str());
        Math::DoubleVector window;
        while (reader.getNextWindow(window)) {
            benchmark::DoNotOptimize(window.data());
            record(pRecord, window.data(), window.size());
        }
    };
}

// Copies each window, since whoever takes one from the library may keep and change it.
Loop cutWithBareLoop(std::size_t windowsPerRead) {
    return [=](Record* pRecord) {
        std::array<double, c_uiWindowSize> window;
        cutBare(audioFile(c_uiSeconds), windowsPerRead * c_uiWindowSize, [&](const double* samples, double) {
            std::copy_n(samples, c_uiWindowSize, window.data());
            benchmark::DoNotOptimize(window.data());
            benchmark::ClobberMemory();
            record(pRecord, window.data(), window.size());
        });
    };
}

void registerCutting(const std::string& name, std::size_t windowsPerRead) {
    registerPair({name, static_cast<double>(c_uiSeconds), 0, [=] { return cutWithLibrary(windowsPerRead); },
                  [=] { return cutWithBareLoop(windowsPerRead); }});
}

const bool registered = [] {
    registerPair({"input/reading", static_cast<double>(c_uiSeconds), 0, readWithLibrary, readWithBareLoop});
    registerCutting("input/windowing, a window per read", 1);
    registerCutting("input/windowing, 16 windows per read", 16);
    return true;
}();

}  // namespace
