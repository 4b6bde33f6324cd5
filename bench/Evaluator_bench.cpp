// Evaluating a recording by a strategy, from the file to the file with the strategy's channels beside the samples.

#include "BareInput.h"
#include "BenchAudio.h"
#include "Pair.h"

#include <murvane/audio/batch/AudioFileEvaluator.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Bench;

constexpr std::size_t c_uiSeconds = 600;
constexpr std::size_t c_uiBlock = 128;
constexpr std::size_t c_uiHeaderSize = 44;

double meanMagnitude(const double* samples, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += std::abs(samples[i]);
    }
    return count == 0 ? 0.0 : sum / static_cast<double>(count);
}

// The mean magnitude of a block, held; and the magnitudes of its samples, beyond full scale.
class Magnitudes final : public Audio::AudioFileEvaluator::Strategy {
public:
    bool evaluateWindow(const Math::DoubleVector& in_window, std::vector<Math::DoubleVector>& out_channels) override {
        out_channels.resize(2);
        out_channels[0].assign(in_window.size(), meanMagnitude(in_window.data(), in_window.size()));
        out_channels[1].resize(in_window.size());
        std::transform(in_window.begin(), in_window.end(), out_channels[1].begin(),
                       [](double sample) { return 4.0 * std::abs(sample); });
        return true;
    }

    bool getProbabilitiesInfo(StringVector& out_info) override {
        out_info = {"mean", "samples"};
        return true;
    }
};

// Records the bytes of a file, eight to a number.
void recordFile(Record* pRecord, const std::string& path) {
    if (pRecord == nullptr) {
        return;
    }
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    bytes.resize((bytes.size() + sizeof(double) - 1) / sizeof(double) * sizeof(double));
    pRecord->resize(bytes.size() / sizeof(double));
    std::memcpy(pRecord->data(), bytes.data(), bytes.size());
}

Loop evaluateWithLibrary() {
    return [](Record* pRecord) {
        const std::string folder = std::filesystem::path(audioFile(c_uiSeconds)).parent_path().string();
        Magnitudes strategy;
        Audio::AudioFileEvaluator evaluator;
        evaluator.configure(c_uiBlock, &strategy, "library", folder.c_str());
        evaluator.processFile(audioFile(c_uiSeconds).c_str());
        recordFile(pRecord,
                   folder + '/' + std::filesystem::path(audioFile(c_uiSeconds)).stem().string() + ".library.wav");
    };
}

std::int16_t scaled(double value) {
    return static_cast<std::int16_t>(std::clamp(value, -1.0, 1.0) * 32767.0);
}

// One pass, without a tree of chunks: the header is the input's with other numbers in it.
Loop evaluateWithBareLoop() {
    return [](Record* pRecord) {
        const std::string& input = audioFile(c_uiSeconds);
        const std::string output = temporaryFile("bare.wav");
        std::vector<std::int16_t> frames;
        readBare(input, c_uiBlock, [&](const double* samples, std::size_t count) {
            const std::int16_t mean = scaled(meanMagnitude(samples, count));
            const std::size_t first = frames.size();
            frames.resize(first + 3 * count);
            for (std::size_t i = 0; i < count; ++i) {
                frames[first + 3 * i] = static_cast<std::int16_t>(samples[i] * 0x8000);
                frames[first + 3 * i + 1] = mean;
                frames[first + 3 * i + 2] = scaled(4.0 * std::abs(samples[i]));
            }
        });
        std::array<char, c_uiHeaderSize> header{};
        std::ifstream(input, std::ios::binary).read(header.data(), header.size());
        const auto put = [&](std::size_t offset, auto value) { std::memcpy(&header[offset], &value, sizeof(value)); };
        const auto size = static_cast<std::uint32_t>(frames.size() * sizeof(std::int16_t));
        put(4, static_cast<std::uint32_t>(size + c_uiHeaderSize - 8));
        put(22, std::uint16_t{3});                                    // channels
        put(28, static_cast<std::uint32_t>(c_uiSampleRate * 3 * 2));  // bytes per second
        put(32, std::uint16_t{3 * 2});                                // bytes per block
        put(40, size);
        std::ofstream file(output, std::ios::binary);
        file.write(header.data(), header.size());
        file.write(reinterpret_cast<const char*>(frames.data()), size);
        file.close();
        recordFile(pRecord, output);
    };
}

const bool registered = [] {
    registerPair({"evaluator/2 channels, blocks of 128 samples", static_cast<double>(c_uiSeconds), 0,
                  evaluateWithLibrary, evaluateWithBareLoop});
    return true;
}();

}  // namespace
