#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace testkit {

/// A folder of its own for one test, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

/// Writes an audio file through libsndfile.
///
/// @param format   libsndfile's format code, 16-bit PCM in WAV by default
/// @param samples  interleaved, full scale 1.0
void writeAudio(const std::string& path, const std::vector<double>& samples, int sampleRate = 8000, int channels = 1,
                int format = 0x010002);

/// `count` samples of a sine.
std::vector<double> sine(std::size_t count, double frequencyHz, double amplitude = 0.5, double sampleRate = 8000.0);

/// `count` samples of noise in [-amplitude, amplitude), the same for the same seed on every machine.
std::vector<double> noise(std::size_t count, std::uint64_t seed, double amplitude = 0.5);

std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);

}  // namespace testkit
