// Formulas, each beside the same feature by its name: here the "bare loop" is a feature computer.

#include "BenchAudio.h"
#include "Pair.h"
#include "WindowGroups.h"

#include <murvane/audio.h>

#include <memory>
#include <string>

namespace {

using namespace Zantrix;
using namespace Zantrix::Bench;

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
