#pragma once

#include "features/FeatureNames.h"

#include <murvane/mathxpr/ExpressionList.h>

#include <string>
#include <vector>

/// What a table holds: features, named, and formulas, in one order.
namespace Zantrix::Cli {

/// One feature or formula; it gives as many columns of the table as it has values.
struct Column {
    enum class Kind { Feature, Formula };

    Kind kind = Kind::Feature;
    std::string name;  ///< what the table calls it
    std::string text;  ///< the name of the feature, or the formula

    bool operator==(const Column&) const = default;
};

Column makeFeatureColumn(const std::string& name);

/// A formula, called by its text unless an identifier and "=" stand before it: "f0=harmonicProduct(spectrum(x))". No
/// formula begins like this.
Column makeFormulaColumn(const std::string& text);

/// What `makeFormulaColumn` makes this formula of.
std::string formulaArgument(const Column& column);

/// For messages: "the feature NAME", "the formula NAME".
std::string describe(const Column& column);

/// Makes sure that the library understands a column that is a formula.
///
/// @throw UsageError  telling what is wrong, with the line and a mark below the place
void checkFormula(const Column& column);

/// Makes sure that the library knows what a column is made of.
///
/// @throw UsageError  telling what is wrong
void checkColumn(const Column& column, const FeatureNames& featureNames);

/// Makes sure of this for all columns, and that they can be told from each other.
///
/// @throw UsageError  as `checkColumn`, and naming a column whose name is taken
void checkColumns(const std::vector<Column>& columns, const FeatureNames& featureNames);

/// All formulas among the columns, in their order; none is refused once the columns were checked.
Math::Xpr::ExpressionList makeFormulas(const std::vector<Column>& columns);

}  // namespace Zantrix::Cli
