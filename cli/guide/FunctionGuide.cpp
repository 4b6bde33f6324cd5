#include "guide/FunctionGuide.h"

#include "shell/Text.h"

#include <murvane/mathxpr/Registry.h>

#include <algorithm>
#include <memory>

namespace Zantrix::Cli {

namespace {

// Functions whose features cannot be had by name; the guide to the features knows the others.
constexpr FeatureDescription c_functionsOnly[] = {
    {"nonLogPeaks", "", "at least 1 value", "5 values", "the positions of the five highest peaks, counted from 0",
     "The highest one comes first. A peak counts with the whole lobe around it.", "", ""},
    {"ponderatedPeaks", "", "at least 1 value", "3 values",
     "the heights of the three highest peaks divided by the mean of the input",
     "A peak counts with the whole lobe around it. All are 0 where the mean is 0.", "", ""},
};

// Values that make sense together, for examples.
struct ExampleValue {
    const char* parameter;
    const char* value;
};

constexpr ExampleValue c_exampleValues[] = {
    {"frequencyHz", "440"},
    {"widthHz", "20"},
    {"frequenciesList", "\"350 440\""},
};

const FeatureDescription* describeFeature(const FeatureGuide& features, const std::string& name) {
    const auto* found = std::find_if(std::begin(c_functionsOnly), std::end(c_functionsOnly),
                                     [&](const FeatureDescription& row) { return name == row.name; });
    return found == std::end(c_functionsOnly) ? features.find(name) : found;
}

std::string exampleOf(const FunctionDescription& function) {
    const bool takesWindow = std::string_view(function.feature->input) == "N samples";
    std::string example = function.name + (takesWindow ? "(x" : "(spectrum(x)");
    for (const Math::Xpr::FunctionParameter& parameter : function.parameters) {
        const auto* value = std::find_if(std::begin(c_exampleValues), std::end(c_exampleValues),
                                         [&](const ExampleValue& row) { return parameter.name == row.parameter; });
        if (value != std::end(c_exampleValues)) {
            example += ", " + parameter.name + '=' + value->value;
        }
    }
    return example + ')';
}

}  // namespace

std::string FunctionDescription::call() const {
    std::vector<std::string> words = arguments;
    for (const Math::Xpr::FunctionParameter& parameter : parameters) {
        words.push_back(parameter.name + '=' + (parameter.kind == Math::Xpr::ParameterKind::Text ? "\"...\"" : "..."));
    }
    return name + '(' + join(words, ", ") + ')';
}

FunctionGuide::FunctionGuide(const FeatureGuide& features) {
    const Math::Xpr::Registry& registry = Math::Xpr::Registry::getInstance();
    for (const std::string& name : registry.getFunctionNames()) {
        const FeatureDescription* feature = describeFeature(features, name);
        if (feature != nullptr) {
            const std::unique_ptr<Math::Xpr::FunctionBaseImpl> pFunction = registry.newFunction(name);
            m_rows.push_back({name, pFunction->getArgumentNames(), pFunction->getParameters(), feature, {}});
            m_rows.back().example = exampleOf(m_rows.back());
        }
    }
}

const FunctionDescription* FunctionGuide::find(std::string_view name) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const auto& row) { return row.name == name; });
    return found == m_rows.end() ? nullptr : &*found;
}

std::vector<std::string> FunctionGuide::names() const {
    std::vector<std::string> names;
    names.reserve(m_rows.size());
    for (const FunctionDescription& row : m_rows) {
        names.push_back(row.name);
    }
    return names;
}

}  // namespace Zantrix::Cli
