#include "TestFunctions.h"

#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/UserFunctionImpl.h>

#include <algorithm>
#include <sstream>

namespace testfunctions {

namespace {

template <typename T>
bool add(const char* name) {
    Xpr::Registry& registry = Xpr::Registry::getInstance();
    return registry.registerFunction(name, new Xpr::Registry::ExpressionAllocatorT<Xpr::UserFunctionImpl<T>>);
}

const bool g_bRegistered = [] {
    return add<DoubledFeature>("doubled") && add<XprMean>("mean") && add<XprTemporalMean>("temporalMean") &&
           add<XprPrevious>("previous") && add<XprRange>("range") && add<XprScaled>("scaled") &&
           add<XprMaximum>("maximum") && add<XprPicky>("picky");
}();

}  // namespace

bool DoubledFeature::compute(const DoubleVector& in, DoubleVector& out) {
    ++s_uiWindows;
    for (const double value : in) {
        out.push_back(2.0 * value);
    }
    return true;
}

bool DoubledFeature::computeWindows(std::span<const DoubleVector> in, std::span<DoubleVector> out) {
    ++s_uiBatches;
    return SignalFeature::computeWindows(in, out);
}

bool PreviousFeature::compute(const DoubleVector& in, DoubleVector& out) {
    out.push_back(m_dLast);
    m_dLast = in.empty() ? m_dLast : in.back();
    return true;
}

bool ScaledFeature::configure(const Zantrix::ROConfiguration& config) {
    std::string list;
    if (!config.getStringParameter("scaled.factors", list)) {
        return false;
    }
    std::istringstream factors(list);
    for (double factor = 0.0; factors >> factor;) {
        m_dFactor *= factor;
    }
    double gain = 1.0;
    config.getFloatParameter("scaled.gain", gain);
    m_dFactor *= gain;
    return factors.eof();
}

bool ScaledFeature::compute(const DoubleVector& in, DoubleVector& out) {
    for (const double value : in) {
        out.push_back(m_dFactor * value);
    }
    return true;
}

bool PickyFeature::compute(const DoubleVector& in, DoubleVector& out) {
    out.append(in);
    return !in.empty();
}

const Xpr::ParameterTable& XprRange::table() {
    static const Xpr::ParameterTable table{
        "range", {{"startIndex", Xpr::ParameterKind::WholeNumber}, {"length", Xpr::ParameterKind::WholeNumber}}};
    return table;
}

const Xpr::ParameterTable& XprScaled::table() {
    static const Xpr::ParameterTable table{
        "scaled", {{"factors", Xpr::ParameterKind::Text}, {"gain", Xpr::ParameterKind::Number, false}}};
    return table;
}

bool XprMaximum::evaluate(std::span<const Xpr::Windows> arguments, std::span<DoubleVector> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        const DoubleVector& a = arguments[0][i];
        const DoubleVector& b = arguments[1][i];
        if (a.size() != b.size()) {
            return false;
        }
        std::transform(a.begin(), a.end(), b.begin(), std::back_inserter(out[i]),
                       [](double left, double right) { return std::max(left, right); });
    }
    return true;
}

}  // namespace testfunctions
