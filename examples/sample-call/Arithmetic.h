#pragma once

#include <cstdint>

/// Arithmetic whose results are the same bits on every machine: nothing but sums, products and comparisons of doubles,
/// which are rounded alike everywhere, and integers. The sines of mathematics libraries differ in their last digit.
namespace SampleCall {

constexpr int c_iSampleRate = 8000;

constexpr int samplesOf(int milliseconds) {
    return milliseconds * (c_iSampleRate / 1000);
}

/// sin(2*pi*turns) to about 1e-16, for |turns| below 2^31: a Taylor series on the quarter turns around 0.
constexpr double sineOfTurns(double turns) {
    double t = turns - static_cast<double>(static_cast<std::int64_t>(turns));
    t = t > 0.5 ? t - 1.0 : t < -0.5 ? t + 1.0 : t;
    t = t > 0.25 ? 0.5 - t : t < -0.25 ? -0.5 - t : t;
    const double x = 6.283185307179586 * t;
    double term = x;
    double sum = x;
    for (int k = 2; k <= 22; k += 2) {
        term = -term * x * x / (k * (k + 1));
        sum += term;
    }
    return sum;
}

constexpr double cosineOfTurns(double turns) {
    return sineOfTurns(turns + 0.25);
}

/// Marsaglia's 32-bit xorshift (Xorshift RNGs, 2003; shifts 13, 17, 5) as uniform noise.
class Noise {
public:
    constexpr explicit Noise(std::uint32_t seed) : m_uiState(seed) {}

    /// The next value in [-1, 1).
    constexpr double next() {
        m_uiState ^= m_uiState << 13;
        m_uiState ^= m_uiState >> 17;
        m_uiState ^= m_uiState << 5;
        return static_cast<double>(m_uiState) / 2147483648.0 - 1.0;
    }

private:
    std::uint32_t m_uiState;  // never 0
};

}  // namespace SampleCall
