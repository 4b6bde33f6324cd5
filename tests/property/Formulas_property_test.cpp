#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/PeakFeatures.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/Registry.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>

#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace Zantrix;
using Math::DoubleVector;
using Math::SignalFeature;
using Math::Xpr::ExpressionList;
using Math::Xpr::FormulaError;
using testkit::sameBits;

namespace {

using Features = std::vector<std::unique_ptr<SignalFeature>>;  // outermost last

Features named(const char* name) {
    static Audio::FeatureComputerWithInputsImpl computer;
    Features features;
    features.emplace_back(computer.getFeaturePool().getNewFeature(name));
    return features;
}

// Of classes that have no name.
template <class Feature>
Features ofSpectrum() {
    Features features = named("SPECTRUM");
    features.push_back(std::make_unique<Feature>());
    return features;
}

template <class Feature>
Features ofWindow() {
    Features features;
    features.push_back(std::make_unique<Feature>());
    return features;
}

struct Pair {
    const char* formula;
    Features (*features)();
};

// Each function of a window as well as of its spectrum, as far as names tell both.
const Pair c_pairs[] = {
    {"spectrum(x)", [] { return named("SPECTRUM"); }},
    {"spectrum(spectrum(x))", [] { return named("SPECTRUM_SPECTRUM"); }},
    {"flatness(spectrum(x))", [] { return named("FLATNESS_SPECTRUM"); }},
    {"flatness(x)", [] { return named("FLATNESS"); }},
    {"harmonicProduct(spectrum(x))", [] { return named("HARMONICPRODUCT_SPECTRUM"); }},
    {"harmonicProduct(x)", [] { return named("HARMONICPRODUCT"); }},
    {"silenceRatio(x)", [] { return named("SILENCERATIO"); }},
    {"nonLogPeaks(spectrum(x))", [] { return ofSpectrum<Audio::NonLogPeaksFeature>(); }},
    {"nonLogPeaks(x)", [] { return ofWindow<Audio::NonLogPeaksFeature>(); }},
    {"peaks(spectrum(x))", [] { return named("PEAKS_SPECTRUM"); }},
    {"peaks(x)", [] { return named("PEAKS"); }},
    {"ponderatedPeaks(spectrum(x))", [] { return ofSpectrum<Audio::PonderatedPeaksFeature>(); }},
    {"ponderatedPeaks(x)", [] { return ofWindow<Audio::PonderatedPeaksFeature>(); }},
    {"zeroCrossingRate(x)", [] { return named("ZEROCROSSINGRATE"); }},
    {"zeroCrossingRate(spectrum(x))", [] { return named("ZEROCROSSINGRATE_SPECTRUM"); }},
    {"spectralRange(spectrum(x), frequencyHz=440, widthHz=20)", [] { return named("SPECTRALRANGE(440,20)_SPECTRUM"); }},
    {"spectralRange(x, widthHz=300, frequencyHz=1000)", [] { return named("SPECTRALRANGE(1000,300)"); }},
    {"maxSpectralRanges(spectrum(x), frequenciesList=\"350 440 1100\")",
     [] { return named("MAXSPECTRALRANGES(350,440,1100)_SPECTRUM"); }},
    {"maxSpectralRanges(x, frequenciesList=\"2100\")", [] { return named("MAXSPECTRALRANGES(2100)"); }},
    {"lowFreqEnergyRatios(spectrum(x))", [] { return named("LOWFREQENERGYRATIOS_SPECTRUM"); }},
    {"lowFreqEnergyRatios(x)", [] { return named("LOWFREQENERGYRATIOS"); }},
};

class Signals {
public:
    explicit Signals(std::uint64_t seed) : m_engine(seed) {}

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }

    double sample() { return static_cast<double>(m_engine() >> 11) * 0x1.0p-52 - 1.0; }

    // Windows of one length as they follow each other in a call: noise, tones, 16-bit silence, clipping, odd values.
    std::vector<DoubleVector> windows(std::size_t count, std::size_t size) {
        std::vector<DoubleVector> windows(count, DoubleVector(size));
        for (DoubleVector& window : windows) {
            fill(window);
        }
        return windows;
    }

private:
    void fill(DoubleVector& window) {
        const std::size_t kind = below(6);
        const double step = 2.0 * std::numbers::pi * (50.0 + 100.0 * static_cast<double>(below(30))) / 8000.0;
        const double scale = std::exp2(-static_cast<double>(below(14)));
        for (std::size_t i = 0; i < window.size(); ++i) {
            const double wave = std::sin(step * static_cast<double>(i)) + 0.5 * std::sin(1.27 * step * double(i));
            const double values[] = {sample() * scale,
                                     wave * scale,
                                     std::clamp(3.0 * wave, -1.0, 1.0),
                                     static_cast<double>(below(3)) / 32768.0,
                                     0.0,
                                     wave * scale + 0.01 * sample()};
            // Steps of 16 bits make equal values and exact zeros.
            window[i] = kind == 0 ? values[0] : std::round(values[kind] * 32768.0) / 32768.0;
        }
        if (below(10) == 0) {
            constexpr double odd[] = {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                      -0.0, 1e300, 5e-324};
            window[below(window.size())] = odd[below(std::size(odd))];
        }
    }

    std::mt19937_64 m_engine;
};

bool computed(Features& features, const DoubleVector& window, DoubleVector& out) {
    out = window;
    for (const std::unique_ptr<SignalFeature>& pFeature : features) {
        const DoubleVector in = out;
        out.clear();
        if (pFeature == nullptr || !pFeature->compute(in, out)) {
            return false;
        }
    }
    return true;
}

constexpr std::size_t c_sizes[] = {256, 128, 240, 64, 512, 50};

TEST(Formulas, ComparedHereAreAllThatAreRegistered) {
    std::set<std::string> compared;
    for (const Pair& pair : c_pairs) {
        const std::string formula = pair.formula;
        compared.insert(formula.substr(0, formula.find('(')));
    }
    const StringVector registered = Math::Xpr::Registry::getInstance().getFunctionNames();
    EXPECT_EQ(compared, std::set<std::string>(registered.begin(), registered.end()));
}

TEST(Formulas, AgreeWithNamesToTheBit) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Signals signals(11);
    std::size_t values = 0;
    for (const Pair& pair : c_pairs) {
        for (const std::size_t size : c_sizes) {
            Features features = pair.features();
            ExpressionList list;
            FormulaError error;
            ASSERT_TRUE(list.add("formula", pair.formula, error)) << error.rendered;
            for (const DoubleVector& window : signals.windows(20, size)) {
                DoubleVector byName;
                DoubleVector byFormula;
                const bool done = computed(features, window, byName);
                ASSERT_EQ(list.evaluate(window, byFormula), done) << pair.formula << " of " << size;
                if (!done) {
                    break;  // what remembers is in no certain state
                }
                ASSERT_TRUE(sameBits(byFormula, byName)) << pair.formula << " of " << size;
                values += byName.size();
            }
        }
    }
    EXPECT_GT(values, 30000U);
}

TEST(Formulas, GiveTheSameForWindowsInBatchesAndOneByOne) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Signals signals(12);
    for (const std::size_t size : {256U, 240U, 64U}) {
        ExpressionList single;
        FormulaError error;
        for (const Pair& pair : c_pairs) {
            ASSERT_TRUE(single.add(pair.formula, pair.formula, error)) << error.rendered;
        }
        ASSERT_TRUE(single.add("mixed", "2 * flatness(spectrum(x)) - zeroCrossingRate(x) / 3", error));
        ExpressionList batched(single);
        for (int round = 0; round < 10; ++round) {
            const std::vector<DoubleVector> windows = signals.windows(1 + signals.below(17), size);
            std::vector<DoubleVector> together(windows.size());
            ASSERT_TRUE(batched.evaluate(windows, together)) << batched.getError();
            for (std::size_t i = 0; i < windows.size(); ++i) {
                DoubleVector alone;
                ASSERT_TRUE(single.evaluate(windows[i], alone)) << single.getError();
                ASSERT_TRUE(sameBits(together[i], alone)) << "window " << i << " of " << windows.size();
            }
        }
    }
}

TEST(Formulas, OfOneListGiveWhatEachGivesAlone) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Signals signals(13);
    const std::vector<DoubleVector> windows = signals.windows(24, 256);
    ExpressionList all;
    FormulaError error;
    for (const Pair& pair : c_pairs) {
        ASSERT_TRUE(all.add(pair.formula, pair.formula, error)) << error.rendered;
    }
    std::vector<DoubleVector> expected(windows.size());
    for (const Pair& pair : c_pairs) {
        ExpressionList alone;
        ASSERT_TRUE(alone.add(pair.formula, pair.formula, error));
        std::vector<DoubleVector> values(windows.size());
        ASSERT_TRUE(alone.evaluate(windows, values)) << alone.getError();
        for (std::size_t i = 0; i < windows.size(); ++i) {
            expected[i].append(values[i]);
        }
    }
    std::vector<DoubleVector> together(windows.size());
    ASSERT_TRUE(all.evaluate(windows, together)) << all.getError();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        EXPECT_TRUE(sameBits(together[i], expected[i])) << "window " << i;
    }
}

}  // namespace
