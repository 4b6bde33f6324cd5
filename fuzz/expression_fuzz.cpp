// Any bytes as a formula: it is refused or taken, printing and parsing it again gives the same formula, and evaluating
// it over small windows, empty ones among them, succeeds or fails cleanly.
#include "Require.h"

#include <murvane/math/BasicFeatures.h>
#include <murvane/math/RangeFeature.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/FormulaParser.h>
#include <murvane/mathxpr/FormulaPrinter.h>
#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <murvane/mathxpr/UserFunctionImpl.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace {

using namespace Zantrix::Math;
using namespace Zantrix::Math::Xpr;

struct FuzzMean : SignalFeatureToFunctionAdaptorImpl<MeanFeature> {
    FuzzMean() : SignalFeatureToFunctionAdaptorImpl("mean", "x") {}
};

struct FuzzTemporalMean : SignalFeatureToFunctionAdaptorImpl<TemporalMeanFeature> {
    FuzzTemporalMean() : SignalFeatureToFunctionAdaptorImpl("temporalMean", "x") {}
};

struct FuzzRange : SignalFeatureWithParamAdaptorImpl<RangeFeature> {
    FuzzRange() : SignalFeatureWithParamAdaptorImpl("range", "x", table()) {}

    static const ParameterTable& table() {
        static const ParameterTable table{
            "range", {{"startIndex", ParameterKind::WholeNumber}, {"length", ParameterKind::WholeNumber}}};
        return table;
    }
};

template <typename T>
bool add(const char* name) {
    return Registry::getInstance().registerFunction(name, new Registry::ExpressionAllocatorT<UserFunctionImpl<T>>);
}

const bool g_bRegistered = add<FuzzMean>("mean") && add<FuzzTemporalMean>("temporalMean") && add<FuzzRange>("range");

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    require(g_bRegistered, "the functions are registered");
    const std::string_view formula(reinterpret_cast<const char*>(data), size);
    SyntaxTree tree;
    FormulaError error;
    if (!parseFormula(formula, tree, error)) {
        require(error.line > 0 && error.column > 0 && error.column <= size + 1, "an error has its place");
        require(!error.rendered.empty(), "an error is told");
    } else {
        const std::string printed = printFormula(tree);
        SyntaxTree again;
        require(printed.size() > c_uiMaxFormulaSize || (parseFormula(printed, again, error) && again == tree),
                "what is printed is the formula");
    }

    ExpressionList list;
    const bool isAdded = list.add("formula", formula, error);
    require(isAdded || !error.message.empty(), "a refusal has a reason");
    static const std::vector<DoubleVector> windows = {{0.5, -0.25, 1e308}, {}, {1.0}};
    std::vector<DoubleVector> out(windows.size());
    list.evaluate(windows, out);
    list.reset();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        list.evaluate(windows[i], out[i]);
    }
    return 0;
}
