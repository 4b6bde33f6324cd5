#pragma once

#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/Object.h>
#include <murvane/core/StringVector.h>
#include <murvane/mathxpr/FormulaError.h>
#include <murvane/mathxpr/FunctionAdaptor.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Math::Xpr {

class ExpressionPlan;

/// Several named formulas that are evaluated over the same windows.
///
/// A value is a vector; a number is a vector of one; "-", "+", "*" and "/" work element by element with the arithmetic
/// of doubles (x/0 is an infinity or NaN, not a failure). A vector of one goes with every element of the other operand,
/// which may also be empty: the result is then empty. Other sizes that differ fail. Functions take vectors and give
/// vectors; no occurrence of one sees what another one did.
///
/// Life of a list:
/// 1. Construct it with the names of its variables.
/// 2. `add` the formulas. What occurs in several of them, or twice in one, is evaluated once, unless a function with a
///    memory is part of it. Formulas may be added after an evaluation, too; they share nothing with those before.
/// 3. `evaluate`, once per window or, faster, once per batch of windows. After the first time, and as long as neither
///    windows nor results grow, the list itself allocates nothing.
/// 4. `reset` between streams, so that functions with a memory start anew.
///
/// A list belongs to one thread; a copy has its own functions, in the same state.
class MURVANE_API ExpressionList : public virtual Cloneable, public virtual Resettable {
public:
    /// @param variables  the names that formulas may use; the first one is what `evaluate(x, out)` binds
    explicit ExpressionList(StringVector variables = {"x"});
    ~ExpressionList() override;

    /// The copy is bound to the same windows.
    ExpressionList(const ExpressionList& other);
    ExpressionList& operator=(const ExpressionList& other);

    /// Appends a formula (see FormulaParser.h for the language, Registry.h for its functions).
    ///
    /// @param name   how the formula is called in messages and by `getNames`; unique within the list
    /// @param error  what is wrong, and where; unchanged on success. Line 0 when the name is what is wrong.
    /// @return false, after an ERROR record and with the list unchanged, when the name is null, empty or taken, or the
    ///         formula cannot be parsed, names something unknown, or calls a function wrongly
    bool add(const char* name, std::string_view formula, FormulaError& error);

    /// The names of the formulas, in the order of addition.
    const StringVector& getNames() const { return m_vNames; }

    /// The formulas as they were added.
    const StringVector& getFormulas() const { return m_vFormulas; }

    /// Binds a variable for all evaluations from now on; binding it again replaces the windows.
    ///
    /// The windows are not copied: they must outlive their use, and what they hold at an evaluation counts.
    ///
    /// @return false when there is no such variable
    bool bind(const char* variable, Windows windows);

    /// Evaluates all formulas over the windows that are bound, window by window in their order.
    ///
    /// @return false, after an ERROR record, when no variable is bound, a formula uses one that is not, variables are
    ///         bound to different numbers of windows, or a function or an operation fails. There are then no values,
    ///         and functions with a memory are in an unspecified state until `reset`.
    bool evaluate();

    /// The values of one formula, a vector per window: those of the last `evaluate()`, until the list is changed or
    /// evaluated again. A formula that is nothing but a variable gives the bound windows themselves.
    ///
    /// @param formula  index in the order of addition
    /// @return none after a failed evaluation, before the first one, and for an index without formula
    Windows getValues(std::size_t formula) const;

    /// Evaluates all formulas over windows of the first variable, which is bound for this call only.
    ///
    /// @param out  one vector per window, none of them one of `x`; replaced by the values of all formulas, in the
    ///             order of addition
    /// @return as `evaluate()`, also false when `x` and `out` differ in number; all of `out` is then empty
    bool evaluate(Windows x, std::span<DoubleVector> out);

    /// The same for one window.
    bool evaluate(const DoubleVector& x, DoubleVector& out);

    /// Why the last evaluation failed, with the name of the formula and the column; empty when it did not.
    const std::string& getError() const { return m_strError; }

    /// Resets every function that has a memory and lets it be reset; true unless one of them could not.
    bool reset() override;

    Cloneable* clone() const override;

private:
    bool fail(std::string message);
    bool countWindows();

    StringVector m_vVariables;
    std::vector<Windows> m_vBindings;  // of each variable
    std::vector<bool> m_vIsBound;
    StringVector m_vNames;
    StringVector m_vFormulas;
    std::vector<std::size_t> m_vRoots;  // the node of each formula
    CloneableObjPtr<ExpressionPlan> m_pPlan;
    std::size_t m_uiNbOfWindows = 0;
    bool m_bHasValues = false;
    std::string m_strError;
};

}  // namespace Zantrix::Math::Xpr
