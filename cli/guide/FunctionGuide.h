#pragma once

#include "guide/FeatureGuide.h"

#include <murvane/mathxpr/FunctionParameter.h>

#include <string>
#include <string_view>
#include <vector>

/// What a user must know of each function of formulas.
namespace Zantrix::Cli {

/// A function as the registry describes it, and what the guide says of the feature behind it.
struct FunctionDescription {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<Math::Xpr::FunctionParameter> parameters;
    const FeatureDescription* feature;  ///< what it takes, gives and is
    std::string example;                ///< a whole formula

    /// How it is called, such as "spectralRange(x, frequencyHz=..., widthHz=...)".
    std::string call() const;
};

/// The functions that formulas may call, in the order of registration; only those that can be explained.
class FunctionGuide {
public:
    explicit FunctionGuide(const FeatureGuide& features);

    const std::vector<FunctionDescription>& rows() const { return m_rows; }

    /// The function of exactly this name, as formulas must write it; null for none.
    const FunctionDescription* find(std::string_view name) const;

    std::vector<std::string> names() const;

private:
    std::vector<FunctionDescription> m_rows;
};

}  // namespace Zantrix::Cli
