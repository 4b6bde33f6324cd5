#include "testkit/WavFixture.h"

#include <sndfile.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <numbers>
#include <random>
#include <stdexcept>

namespace testkit {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "murvane-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + name);
    }
    m_path = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void writeAudio(const std::string& path, const std::vector<double>& samples, int sampleRate, int channels, int format) {
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = format;
    SNDFILE* pFile = sf_open(path.c_str(), SFM_WRITE, &info);
    if (pFile == nullptr) {
        throw std::runtime_error("cannot write " + path + ": " + sf_strerror(nullptr));
    }
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool written = sf_write_double(pFile, samples.data(), count) == count;
    if (sf_close(pFile) != 0 || !written) {
        throw std::runtime_error("cannot write " + path);
    }
}

std::vector<double> sine(std::size_t count, double frequencyHz, double amplitude, double sampleRate) {
    std::vector<double> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = amplitude * std::sin(2.0 * std::numbers::pi * frequencyHz * static_cast<double>(i) / sampleRate);
    }
    return samples;
}

std::vector<double> noise(std::size_t count, std::uint64_t seed, double amplitude) {
    std::mt19937_64 random(seed);
    std::vector<double> samples(count);
    for (double& sample : samples) {
        sample = amplitude * (static_cast<double>(random() >> 11) * 0x1.0p-52 - 1.0);
    }
    return samples;
}

std::string readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

}  // namespace testkit
