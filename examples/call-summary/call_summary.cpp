/// Tells the phases of a call apart: for each phase of a recording, a few features and the strongest tones.
///
///     call_summary CALL.wav PHASES.csv
///
/// PHASES.csv has the columns phase, start and stop (seconds), as the sample call's list has. Exit status: 0 done, 1 a
/// file could not be read, 2 wrong usage.

#include <murvane/audio.h>

#include <log4cplus/configurator.h>
#include <log4cplus/consoleappender.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Zantrix::Audio::FeatureComputerWithInputsImpl;
using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;

struct Phase {
    std::string name;
    double start = 0.0;
    double stop = 0.0;
};

// Sums over the windows of all phases of one name.
struct Summary {
    std::string name;
    int occurrences = 0;
    double seconds = 0.0;
    std::size_t windows = 0;
    double power = 0.0;
    double flatness = 0.0;
    double zeroCrossingRate = 0.0;
    std::vector<double> tones;  // shares of power, one per frequency of c_tonesHz
    DoubleVector spectrum;
};

constexpr std::array c_tonesHz = {350, 440, 480, 620};
constexpr double c_topHz = 4000.0;

bool readPhases(const std::string& path, std::vector<Phase>& phases) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        Phase phase;
        char comma = '\0';
        if (!std::getline(fields, phase.name, ',') || !(fields >> phase.start >> comma >> phase.stop)) {
            return false;
        }
        phases.push_back(phase);
    }
    return file.eof() && !phases.empty();
}

// Adds one phase: goes to its start and takes the windows that end within it.
bool addPhase(const std::string& path, const Phase& phase, Summary& summary) {
    // Long windows tell close tones apart; the digits are too short for them.
    const std::uint64_t windowMs = phase.stop - phase.start >= 0.2 ? 128 : 64;
    LinearAudioWindower::Config config;
    config.m_uiWindowSizeMs = windowMs;
    config.m_uiWindowOverlapMs = windowMs - 8;

    FeatureComputerWithInputsImpl computer;
    bool known = computer.addFeature("SPECTRUM") && computer.addFeature("FLATNESS_SPECTRUM") &&
                 computer.addFeature("ZEROCROSSINGRATE");
    for (const int tone : c_tonesHz) {
        known = known && computer.addFeature(("SPECTRALRANGE(" + std::to_string(tone) + ",16)_SPECTRUM").c_str());
    }
    if (!known) {
        return false;
    }

    WindowedAudioFileReader reader;
    if (!reader.configure(config) || !reader.setSourceAudioFile(path.c_str()) || !reader.gotoAudioTime(phase.start)) {
        return false;
    }
    DoubleVector window;
    DoubleVector values;
    computer.setInput("Amplitude", window);
    while (reader.getNextWindow(window) && reader.getCurrentAudioTime() <= phase.stop) {
        if (!computer.computeFeatures(values)) {
            return false;
        }
        const std::size_t binCount = window.size() / 2;
        const double* next = values.data();
        summary.spectrum.resize(binCount);
        for (std::size_t k = 0; k < binCount; ++k) {
            summary.spectrum[k] += *next++;
        }
        summary.flatness += *next++;
        summary.zeroCrossingRate += *next++;
        // Each range ends with the position of its centre within its bin; what precedes it are shares of the power.
        const std::size_t rangeLength =
            static_cast<std::size_t>(values.data() + values.size() - next) / c_tonesHz.size();
        summary.tones.resize(c_tonesHz.size());
        for (double& tone : summary.tones) {
            for (std::size_t i = 0; i + 1 < rangeLength; ++i) {
                tone += *next++;
            }
            ++next;
        }
        for (const double sample : window) {
            summary.power += sample * sample / static_cast<double>(window.size());
        }
        ++summary.windows;
    }
    ++summary.occurrences;
    summary.seconds += phase.stop - phase.start;
    return true;
}

// The strongest tones of a spectrum: peaks that hold at least a tenth of the power, at most two, lower one first. For a
// Hann window the ratio of a peak's two largest bins gives the frequency between them.
std::string strongestTones(const Summary& summary) {
    const DoubleVector& spectrum = summary.spectrum;
    struct Peak {
        double share = 0.0;
        double hz = 0.0;
    };
    std::array<Peak, 2> strongest;
    for (std::size_t k = 1; k + 1 < spectrum.size(); ++k) {
        if (spectrum[k] < spectrum[k - 1] || spectrum[k] <= spectrum[k + 1]) {
            continue;
        }
        const bool isAbove = spectrum[k + 1] > spectrum[k - 1];
        const double ratio = std::sqrt((isAbove ? spectrum[k + 1] : spectrum[k - 1]) / spectrum[k]);
        const double offset = (2.0 * ratio - 1.0) / (ratio + 1.0);
        const double bin = static_cast<double>(k) + (isAbove ? offset : -offset);
        const double share = (spectrum[k - 1] + spectrum[k] + spectrum[k + 1]) /
                             static_cast<double>(std::max<std::size_t>(summary.windows, 1));
        const Peak peak{share, bin * c_topHz / static_cast<double>(spectrum.size())};
        if (peak.share > strongest[0].share) {
            strongest = {peak, strongest[0]};
        } else if (peak.share > strongest[1].share) {
            strongest[1] = peak;
        }
    }
    std::sort(strongest.begin(), strongest.end(), [](const Peak& a, const Peak& b) { return a.hz < b.hz; });
    std::string text;
    for (const Peak& peak : strongest) {
        if (peak.share >= 0.1) {
            text += (text.empty() ? "" : " + ") + std::to_string(std::lround(peak.hz));
        }
    }
    return text.empty() ? "-" : text;
}

void print(const std::vector<Summary>& summaries) {
    std::printf("%-10s %5s %7s %7s  %-12s %8s %9s", "phase", "times", "seconds", "dBFS", "tones (Hz)", "flatness",
                "crossings");
    for (const int tone : c_tonesHz) {
        std::printf(" %5d", tone);
    }
    std::printf("\n");
    for (const Summary& summary : summaries) {
        const double count = static_cast<double>(summary.windows);
        std::printf("%-10s %5d %7.2f", summary.name.c_str(), summary.occurrences, summary.seconds);
        if (summary.windows == 0) {
            std::printf("  (too short for a window)\n");
            continue;
        }
        std::printf(" %7.1f  %-12s %8.3f %9.3f", 10.0 * std::log10(summary.power / count),
                    strongestTones(summary).c_str(), summary.flatness / count, summary.zeroCrossingRate / count);
        for (const double tone : summary.tones) {
            std::printf(" %4.0f%%", 100.0 * tone / count);
        }
        std::printf("\n");
    }
}

// The library reports to whatever log4cplus was told; a program that tells it nothing gets a complaint of log4cplus.
void reportWarnings() {
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::ConsoleAppender(true)));
    root.setLogLevel(log4cplus::WARN_LOG_LEVEL);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: call_summary CALL.wav PHASES.csv\n";
        return 2;
    }
    reportWarnings();
    std::vector<Phase> phases;
    if (!readPhases(argv[2], phases)) {
        std::cerr << "call_summary: " << argv[2] << ": is no list of phases\n";
        return 1;
    }
    // One row per name, in the order of first occurrence.
    std::vector<Summary> summaries;
    for (const Phase& phase : phases) {
        auto summary = std::find_if(summaries.begin(), summaries.end(),
                                    [&](const Summary& known) { return known.name == phase.name; });
        if (summary == summaries.end()) {
            summary = summaries.insert(summary, Summary{.name = phase.name, .tones = {}, .spectrum = {}});
        }
        if (!addPhase(argv[1], phase, *summary)) {
            std::cerr << "call_summary: " << argv[1] << ": cannot be analysed\n";
            return 1;
        }
    }
    print(summaries);
    return 0;
}
