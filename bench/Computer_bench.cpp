// Spectra, and feature computers of one, three and ten features, one window at a time and eight; then the whole
// analysis, from a file to feature vectors.

#include "BenchAudio.h"
#include "FeatureLists.h"
#include "Pair.h"
#include "WindowGroups.h"

#include <murvane/audio.h>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Bench;

constexpr std::size_t c_uiSeconds = 600;

using Computer = Audio::FeatureComputerWithInputsImpl;

std::shared_ptr<Computer> makeComputer(const Names& names) {
    const auto pComputer = std::make_shared<Computer>();
    pComputer->setInputWindows("Amplitude", windows());
    for (const char* name : names) {
        pComputer->addFeature(name);
    }
    return pComputer;
}

Loop spectraWithLibrary(std::size_t group) {
    const auto pFeature = std::make_shared<Audio::SpectrumFeature>();
    return inGroups(group, [=](Windows in, Rows rows) {
        for (Math::DoubleVector& row : rows) {
            row.clear();
        }
        return group == 1 ? pFeature->compute(in[0], rows[0]) : pFeature->computeWindows(in, rows);
    });
}

Loop computeWithLibrary(const Names& names, std::size_t group) {
    const auto pComputer = makeComputer(names);
    return inGroups(group, [=](Windows in, Rows rows) {
        if (group == 1) {
            pComputer->setInput("Amplitude", in[0]);
            return pComputer->computeFeatures(rows[0]);
        }
        pComputer->setInputWindows("Amplitude", in);
        return pComputer->computeFeatures(rows);
    });
}

template <typename Bare>
Loop groupsWithBareLoop(std::size_t group, const Bare& bare) {
    return [=, computer = bare](Record* pRecord) mutable {
        const std::vector<Math::DoubleVector>& all = windows();
        std::array<const double*, c_uiMaxGroup> in;
        for (std::size_t first = 0; first < all.size(); first += group) {
            for (std::size_t i = 0; i < group; ++i) {
                in[i] = all[first + i].data();
            }
            computer.compute({in.data(), group});
            benchmark::DoNotOptimize(computer.row(0));
            benchmark::ClobberMemory();
            for (std::size_t i = 0; i < group; ++i) {
                record(pRecord, computer.row(i), computer.rowSize());
            }
        }
    };
}

void add(const std::string& name, std::function<Loop()> makeLibrary, std::function<Loop()> makeBare) {
    const std::size_t count = windows().size();
    registerPair(
        {name, static_cast<double>(count) * c_dHopSeconds, count, std::move(makeLibrary), std::move(makeBare)});
}

std::string ofGroup(std::size_t group) {
    return group == 1 ? ", one window at a time" : ", 8 windows at a time";
}

void addSpectra(const std::string& name, std::size_t group) {
    add(
        name, [=] { return spectraWithLibrary(group); }, [=] { return groupsWithBareLoop(group, bareSpectrum()); });
}

template <typename Bare>
void addComputer(const std::string& name, const Names& names, const Bare& bare) {
    for (const std::size_t group : {1, 8}) {
        add(
            "computer/" + name + ofGroup(group), [=] { return computeWithLibrary(names, group); },
            [=] { return groupsWithBareLoop(group, bare); });
    }
}

Loop oneAfterTheOther(const std::vector<Loop>& loops) {
    return [=](Record* pRecord) {
        for (const Loop& loop : loops) {
            loop(pRecord);
        }
    };
}

// What three features of the spectrum would cost if each had a spectrum of its own.
void addComputersApart(const std::string& name) {
    for (const std::size_t group : {1, 8}) {
        const auto makeLibrary = [=] {
            std::vector<Loop> loops;
            for (const char* feature : c_vThreeOfSpectrum) {
                loops.push_back(computeWithLibrary({feature}, group));
            }
            return oneAfterTheOther(loops);
        };
        const auto makeBare = [=] {
            const BareComputer flatness(false, std::tuple(BareFlatness()), std::tuple());
            const BareComputer ratios(false, std::tuple(BareLowFreqEnergyRatios()), std::tuple());
            return oneAfterTheOther({groupsWithBareLoop(group, bareSpectrum()), groupsWithBareLoop(group, flatness),
                                     groupsWithBareLoop(group, ratios)});
        };
        add("computer/" + name + ofGroup(group), makeLibrary, makeBare);
    }
}

// As the command reads and computes.
Loop analyseWithLibrary(const Names& names) {
    return [=](Record* pRecord) {
        Audio::WindowedAudioFileReader reader;
        reader.configure({c_uiSampleRate, c_uiWindowMs, c_uiOverlapMs, false});
        reader.setChunkReadFactor(16);
        reader.setSourceAudioFile(audioFile(c_uiSeconds).c_str());
        const std::shared_ptr<Computer> pComputer = makeComputer(names);
        std::array<Math::DoubleVector, c_uiMaxGroup> group;
        std::array<Math::DoubleVector, c_uiMaxGroup> rows;
        for (std::size_t count = c_uiMaxGroup; count == c_uiMaxGroup;) {
            for (count = 0; count < c_uiMaxGroup && reader.getNextWindow(group[count]);) {
                ++count;
            }
            pComputer->setInputWindows("Amplitude", std::span(group).first(count));
            if (!pComputer->computeFeatures(std::span(rows).first(count))) {
                return;
            }
            benchmark::DoNotOptimize(rows.data());
            recordRows(pRecord, std::span(rows).first(count));
        }
    };
}

template <typename Bare>
Loop analyseWithBareLoop(const Bare& bare) {
    return [=](Record* pRecord) {
        Bare computer = bare;
        analyseBare(audioFile(c_uiSeconds), computer, [&](const double* row, std::size_t size, double) {
            benchmark::DoNotOptimize(row);
            benchmark::ClobberMemory();
            record(pRecord, row, size);
        });
    };
}

template <typename Bare>
void addAnalysis(const std::string& name, const Names& names, const Bare& bare) {
    registerPair({"analysis/" + name, static_cast<double>(c_uiSeconds), 0, [=] { return analyseWithLibrary(names); },
                  [=] { return analyseWithBareLoop(bare); }});
}

const bool registered = [] {
    addSpectra("spectrum/one window at a time", 1);
    addSpectra("spectrum/8 windows at a time", 8);
    addComputer("1 feature", c_vSpectrum, bareSpectrum());
    addComputer("3 features", c_vThreeOfSpectrum, bareThreeOfSpectrum());
    addComputer("10 features", c_vTen, bareTen());
    addComputersApart("3 computers of 1 feature each");
    addAnalysis("spectra and 3 values", c_vThreeOfSpectrum, bareThreeOfSpectrum());
    addAnalysis("4 values", c_vThreeNarrow, bareThreeNarrow());
    addAnalysis("10 features", c_vTen, bareTen());
    return true;
}();

}  // namespace
