#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// What a user must know of each feature.
namespace Zantrix::Cli {

/// A row of the guide. N is the number of samples of a window, L = N/2 the number of bins of its spectrum.
struct FeatureDescription {
    const char* name;
    const char* parameters;  ///< as they are written, such as "(start,length)"; "" for none
    const char* input;
    const char* output;
    const char* sentence;  ///< what it is, without a full stop
    const char* details;   ///< more sentences; may be ""
    const char* example;   ///< a whole name
    const char* trial;     ///< an element that the library builds if it has the feature
};

/// The features that the library builds by name, in the order in which they are explained.
class FeatureGuide {
public:
    /// Keeps the rows that the library can build.
    ///
    /// @param isKnown  whether it builds a feature of this name
    explicit FeatureGuide(const std::function<bool(const std::string& name)>& isKnown);

    const std::vector<const FeatureDescription*>& rows() const { return m_vRows; }

    /// The row of a name without parameters, in any case; null for none.
    const FeatureDescription* find(std::string_view name) const;

    std::vector<std::string> names() const;

private:
    std::vector<const FeatureDescription*> m_vRows;
};

}  // namespace Zantrix::Cli
