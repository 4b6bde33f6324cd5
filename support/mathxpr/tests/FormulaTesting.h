#pragma once

#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/FormulaParser.h>

#include <gtest/gtest.h>

#include <string_view>

/// What the tests of formulas share.
namespace formulatesting {

/// Adds a formula, which must be accepted.
inline void add(Zantrix::Math::Xpr::ExpressionList& list, const char* name, std::string_view formula) {
    Zantrix::Math::Xpr::FormulaError error;
    ASSERT_TRUE(list.add(name, formula, error)) << error.rendered;
}

/// The tree of a formula, which must be accepted, and leave the error alone.
inline Zantrix::Math::Xpr::SyntaxTree parsed(std::string_view formula) {
    Zantrix::Math::Xpr::SyntaxTree tree;
    Zantrix::Math::Xpr::FormulaError error;
    EXPECT_TRUE(Zantrix::Math::Xpr::parseFormula(formula, tree, error)) << error.rendered;
    EXPECT_EQ(error.line, 0u);
    return tree;
}

}  // namespace formulatesting
