// Formulas, each beside the same feature by its name: here the "bare loop" is a feature computer.

#include "BenchAudio.h"
#include "Pair.h"

#include <murvane/audio.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Bench;

using Windows = std::span<const Math::DoubleVector>;
using Rows = std::span<Math::DoubleVector>;

/// All windows, `group` at a time.
template <typename Compute>
Loop inGroups(std::size_t group, Compute compute) {
    return [=, rows = std::vector<Math::DoubleVector>(group)](Record* pRecord) mutable {
        const Windows all = windows();
        for (std::size_t first = 0; first < all.size(); first += group) {
            if (!compute(all.subspan(first, group), Rows(rows))) {
                return;
            }
            benchmark::DoNotOptimize(rows.data());
            for (const Math::DoubleVector& row : rows) {
                record(pRecord, row.data(), row.size());
            }
        }
    };
}

Loop byFormula(const std::string& formula, std::size_t group) {
    const auto pList = std::make_shared<Math::Xpr::ExpressionList>();
    Math::Xpr::FormulaError error;
    pList->add("formula", formula, error);
    return inGroups(group, [=](Windows in, Rows rows) { return pList->evaluate(in, rows); });
}

Loop byName(const std::string& name, std::size_t group) {
    const auto pComputer = std::make_shared<Audio::FeatureComputerWithInputsImpl>();
    pComputer->setInputWindows("Amplitude", windows());
    pComputer->addFeature(name.c_str());
    return inGroups(group, [=](Windows in, Rows rows) {
        return pComputer->setInputWindows("Amplitude", in) && pComputer->computeFeatures(rows);
    });
}

void add(const std::string& formula, const std::string& name) {
    for (const std::size_t group : {1, 8}) {
        registerPair({"formula/" + formula + ", " + std::to_string(group) + " at a time", 0.0, windows().size(),
                      [=] { return byFormula(formula, group); }, [=] { return byName(name, group); }});
    }
}

const bool registered = [] {
    add("flatness(spectrum(x))", "FLATNESS_SPECTRUM");
    add("harmonicProduct(spectrum(x))", "HARMONICPRODUCT_SPECTRUM");
    add("zeroCrossingRate(x)", "ZEROCROSSINGRATE");
    return true;
}();

}  // namespace
