#include "BenchAudio.h"

#include "features/SpectrumKernels.h"

#include <murvane/audio/input/AudioSignalWindow.h>

#include <sndfile.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <numbers>
#include <random>
#include <stdexcept>

namespace Zantrix::Bench {

namespace {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "murvane-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make the folder " + name);
        }
        m_path = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// Every tone of the telephone network is a multiple of 10 Hz, so a tenth of a second holds whole periods.
constexpr std::size_t c_uiPeriod = c_uiSampleRate / 10;

std::array<double, c_uiPeriod> twoTones(double low, double high) {
    std::array<double, c_uiPeriod> samples{};
    for (std::size_t i = 0; i < c_uiPeriod; ++i) {
        const double phase = 2.0 * std::numbers::pi * static_cast<double>(i) / c_uiSampleRate;
        samples[i] = 0.2 * (std::sin(low * phase) + std::sin(high * phase));
    }
    return samples;
}

std::vector<short> makeSignal(std::size_t seconds) {
    const std::array<std::array<double, c_uiPeriod>, 4> tones = {twoTones(350, 440), {}, twoTones(480, 620), {}};
    constexpr std::array<double, 4> noise = {0.002, 0.002, 0.01, 0.3};
    std::minstd_rand generator(1);
    constexpr double range = static_cast<double>(std::minstd_rand::max());
    std::vector<short> signal;
    signal.reserve(seconds * c_uiSampleRate);
    for (std::size_t second = 0; second < seconds; ++second) {
        const std::size_t kind = second % tones.size();
        for (std::size_t i = 0; i < c_uiSampleRate; ++i) {
            const double random = 2.0 * static_cast<double>(generator()) / range - 1.0;
            signal.push_back(static_cast<short>(0x7fff * (tones[kind][i % c_uiPeriod] + noise[kind] * random)));
        }
    }
    return signal;
}

void writeAudio(const std::string& path, const std::vector<short>& signal) {
    SF_INFO info{};
    info.samplerate = c_uiSampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* pFile = sf_open(path.c_str(), SFM_WRITE, &info);
    const auto size = static_cast<sf_count_t>(signal.size());
    const bool isWritten = pFile != nullptr && sf_write_short(pFile, signal.data(), size) == size;
    if (sf_close(pFile) != 0 || !isWritten) {
        throw std::runtime_error("cannot write " + path);
    }
}

}  // namespace

std::string temporaryFile(const std::string& name) {
    static const TemporaryFolder folder;
    return (folder.path() / name).string();
}

const std::string& audioFile(std::size_t seconds) {
    static std::map<std::size_t, std::string> files;
    std::string& path = files[seconds];
    if (path.empty()) {
        const std::string name = temporaryFile(std::to_string(seconds) + "s.wav");
        writeAudio(name, makeSignal(seconds));
        path = name;
    }
    return path;
}

const std::vector<Math::DoubleVector>& windows() {
    static const std::vector<Math::DoubleVector> windows = [] {
        constexpr std::size_t count = 256;
        const std::vector<short> signal = makeSignal(5);
        std::vector<Math::DoubleVector> made(count);
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t k = 0; k < c_uiWindowSize; ++k) {
                made[i].push_back(signal[i * c_uiHop + k] * (1.0 / 0x8000));
            }
        }
        return made;
    }();
    return windows;
}

const std::vector<Math::DoubleVector>& spectra() {
    static const std::vector<Math::DoubleVector> spectra = [] {
        std::vector<Math::DoubleVector> made = windows();
        for (Math::DoubleVector& values : made) {
            for (std::size_t i = 0; i < c_uiWindowSize; ++i) {
                values[i] *= weights()[i];
            }
            Audio::powerSpectrum(values);
            values.resize(c_uiBinCount);
        }
        return made;
    }();
    return spectra;
}

const std::vector<Math::DoubleVector>& singleValues() {
    static const std::vector<Math::DoubleVector> values = [] {
        std::vector<Math::DoubleVector> made;
        for (const Math::DoubleVector& window : windows()) {
            made.push_back({window[0]});
        }
        return made;
    }();
    return values;
}

const std::vector<double>& weights() {
    static const Audio::HannWindow window(c_uiWindowSize);
    return window.getWeights();
}

}  // namespace Zantrix::Bench
