#pragma once

#include <murvane/core/MemAccount.h>
#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeature.h>

#include <cstddef>
#include <string>

namespace Zantrix::Math {

/// Builds features from their names.
///
///     name    := element { "_" element }     the last element sees the window, each other one the result on its right
///     element := base [ "(" [ param { "," param } ] ")" ]
///     base    := any characters but "_" "(" ")" ","     compared without regard to case
///
/// "TemporalMean_Mean_Amplitude" is the temporal mean of the mean of the amplitude. Blanks at a parameter's ends are
/// dropped, and "X()" is "X". Anything else is malformed: null, "", an empty element, unbalanced parentheses, text
/// behind a ")", an empty parameter, and more than `c_uiMaxElements` elements.
class MURVANE_API SignalFeatureFactory : public virtual Object {
public:
    MURVANE_MEM_ACCOUNT("SignalFeatureFactory")

    /// How many elements a name may have: features nest as deep, so that a name without end would exhaust the stack.
    static constexpr std::size_t c_uiMaxElements = 256;

    /// The factory's own name; a pool holds one factory of each name.
    virtual const char* getFactoryName() const = 0;

    /// A new feature of one element, owned by the caller; null when this factory does not build it.
    virtual SignalFeature* getNewBaseFeature(const char* name) = 0;

    /// A new feature of a whole name, composed of elements that this factory builds; owned by the caller. Null when
    /// the name is malformed or an element is not built here.
    SignalFeature* getNewFeature(const char* name);

    /// Splits one element into its base and its parameters, in order. A base with single underscores between other
    /// characters is well-formed here, though no factory builds it.
    ///
    /// @return false when the element is malformed; the outputs are then empty
    static bool splitParams(const char* name, std::string& base, StringVector& params);

    /// Splits a name into its elements, from left to right.
    ///
    /// @return false when the name or one of its elements is malformed; the output is then empty
    static bool splitElements(const char* name, StringVector& elements);
};

}  // namespace Zantrix::Math
