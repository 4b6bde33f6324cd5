#pragma once

#include "BenchAudio.h"

#include <sndfile.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

/// Reading and cutting with libsndfile and plain arrays.
namespace Zantrix::Bench {

/// Reads a whole file in chunks of so many frames, as shorts, scaled to full scale 1.0.
///
/// @param visit  called with each chunk's samples and their number, the last chunk shorter or empty
template <typename Visit>
void readBare(const std::string& path, std::size_t chunk, Visit visit) {
    SF_INFO info{};
    SNDFILE* const pFile = sf_open(path.c_str(), SFM_READ, &info);
    if (pFile == nullptr) {
        throw std::runtime_error("cannot open " + path);
    }
    std::vector<short> shorts(chunk);
    std::vector<double> samples(chunk);
    for (std::size_t count = chunk; count == chunk;) {
        count = static_cast<std::size_t>(sf_read_short(pFile, shorts.data(), static_cast<sf_count_t>(chunk)));
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = shorts[i] * (1.0 / 0x8000);
        }
        visit(samples.data(), count);
    }
    sf_close(pFile);
}

/// Cuts a whole file into windows.
///
/// @param visit  called with each window's samples and the time of its end
template <typename Visit>
void cutBare(const std::string& path, std::size_t chunk, Visit visit) {
    std::vector<double> pending(c_uiWindowSize + chunk);
    std::size_t count = 0;
    double time = c_dHopSeconds;
    readBare(path, chunk, [&](const double* samples, std::size_t read) {
        std::copy_n(samples, read, &pending[count]);
        count += read;
        std::size_t start = 0;
        for (; count - start >= c_uiWindowSize; start += c_uiHop) {
            time += c_dHopSeconds;
            visit(&pending[start], time);
        }
        std::copy(&pending[start], &pending[count], pending.data());
        count -= start;
    });
}

}  // namespace Zantrix::Bench
