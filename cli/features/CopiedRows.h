#pragma once

#include "batch/BatchRun.h"
#include "features/FeatureTable.h"
#include "features/PreviousTable.h"
#include "shell/Diagnostics.h"

namespace Zantrix::Cli {

/// The rows of an input that the table of an earlier run holds.
class CopiedRows : public Delivery {
public:
    CopiedRows(FeatureTable& table, const PreviousTable& previous, Diagnostics& diagnostics, TableInput input);

    Outcome deliver() override;

private:
    FeatureTable& m_table;
    const PreviousTable& m_previous;
    Diagnostics& m_diagnostics;
    TableInput m_input;
};

}  // namespace Zantrix::Cli
