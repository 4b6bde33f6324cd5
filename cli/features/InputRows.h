#pragma once

#include "batch/BatchRun.h"
#include "features/FeatureTable.h"
#include "features/RowEncoder.h"
#include "shell/Diagnostics.h"
#include "shell/Digest.h"

#include <cstddef>
#include <string_view>

namespace Zantrix::Cli {

/// The rows of one input on their way into the table: kept until its turn has come, then passed through.
///
/// An input that fails shall leave no rows. Where rows that have left cannot be withdrawn, the first ones wait even in
/// turn; of an input that fails behind them all rows up to there stand in the output, so that the output does not
/// depend on who came first.
class InputRows : public Delivery, public RowSink {
public:
    InputRows(Turn& turn, FeatureTable& table, Diagnostics& diagnostics, TableInput input);

    /// To be called before the first row.
    ///
    /// @return false when rows of this input cannot stand in the table, as far as that is known yet
    bool start(double firstTime);

    /// In turn: whether the rows fit, which is looked at once. Of one that does not, all is forgotten that was said
    /// since `start`: had it been its turn then, no row would have been computed.
    bool settle();

    bool take(std::string_view bytes, std::size_t rows) override;
    bool isUrgent() const override { return m_eState == State::Passing; }

    /// Whether rows that an input gave before it failed are wanted.
    bool wantsRowsOfFailed() const { return !m_table.canDrop(); }

    /// Tells whether all of the input was done; the reason was told. Nothing more is taken then.
    void end(bool isDone) { m_bDone = isDone; }

    Outcome deliver() override;

private:
    enum class State { Holding, Passing, Misfit, OutputFailed };

    void pass();

    Turn& m_turn;  // while the input is worked on
    FeatureTable& m_table;
    Diagnostics& m_diagnostics;
    TableInput m_input;
    InputMessages m_beforeRows;
    bool m_bHasRows = false;
    bool m_bSettled = false;  // that the rows fit
    bool m_bDone = false;
    State m_eState = State::Holding;
    Digest m_digest;  // of all bytes so far
    HeldBytes m_held;
    std::size_t m_uiHeldRows = 0;
};

}  // namespace Zantrix::Cli
