#include "features/Column.h"

#include "Command.h"
#include "shell/Diagnostics.h"

#include <murvane/core/Text.h>

#include <set>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szBlanks = " \t\r\n";

// What every table says of a row already.
constexpr const char* c_takenNames[] = {"file", "time"};

// Where the "=" stands behind the identifier that a text begins with; npos when it does not begin like this.
std::size_t findAssignment(const std::string& text) {
    std::size_t end = 0;
    while (end < text.size() && (Text::isLetter(text[end]) || Text::isDigit(text[end]) || text[end] == '_')) {
        ++end;
    }
    if (end == 0 || Text::isDigit(text.front())) {
        return std::string::npos;
    }
    const std::size_t next = text.find_first_not_of(c_szBlanks, end);
    return next != std::string::npos && text[next] == '=' ? next : std::string::npos;
}

}  // namespace

Column makeFeatureColumn(const std::string& name) {
    return {Column::Kind::Feature, name, name};
}

Column makeFormulaColumn(const std::string& text) {
    const std::size_t assignment = findAssignment(text);
    if (assignment == std::string::npos) {
        return {Column::Kind::Formula, text, text};
    }
    return {Column::Kind::Formula, text.substr(0, text.find_first_of("= \t\r\n")), text.substr(assignment + 1)};
}

std::string formulaArgument(const Column& column) {
    return column.name == column.text ? column.text : column.name + '=' + column.text;
}

std::string describe(const Column& column) {
    return (column.kind == Column::Kind::Feature ? "the feature " : "the formula ") + column.name;
}

void checkFormula(const Column& column) {
    Math::Xpr::ExpressionList formulas;
    Math::Xpr::FormulaError error;
    if (column.text.find_first_not_of(c_szBlanks) == std::string::npos) {
        throw UsageError("the formula of '" + Math::Xpr::excerpt(column.name) + "' is empty");
    }
    const QuietLog library;
    if (!formulas.add(column.name.c_str(), column.text, error)) {
        // The list reports every error that it returns; what else there is comes from a function.
        const bool isMore =
            !library.firstError().empty() && library.firstError().find(error.message) == std::string::npos;
        throw UsageError("wrong formula: " + error.rendered + (isMore ? "\n" + library.firstError() : "") +
                         "\n'murvane-audio list' names the functions.");
    }
}

void checkColumn(const Column& column, const FeatureNames& featureNames) {
    if (column.kind == Column::Kind::Formula) {
        checkFormula(column);
    } else if (const auto problem = featureNames.problem(column.text)) {
        throw UsageError(*problem);
    }
}

void checkColumns(const std::vector<Column>& columns, const FeatureNames& featureNames) {
    std::set<std::string> names(std::begin(c_takenNames), std::end(c_takenNames));
    for (const Column& column : columns) {
        checkColumn(column, featureNames);
        if (!names.insert(column.name).second) {
            throw UsageError("two columns would be called '" + column.name +
                             "'; a name of its own is given to a formula as --expr 'NAME=FORMULA'");
        }
    }
}

Math::Xpr::ExpressionList makeFormulas(const std::vector<Column>& columns) {
    Math::Xpr::ExpressionList formulas;
    Math::Xpr::FormulaError ignored;
    for (const Column& column : columns) {
        if (column.kind == Column::Kind::Formula) {
            formulas.add(column.name.c_str(), column.text, ignored);
        }
    }
    return formulas;
}

}  // namespace Zantrix::Cli
