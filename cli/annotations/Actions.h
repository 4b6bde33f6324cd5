#pragma once

#include "annotations/AnnotationEdit.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"
#include "shell/Interrupt.h"
#include "shell/Output.h"

#include <string>
#include <vector>

/// What 'murvane-audio annotations' does, one function for each of its actions.
namespace Zantrix::Cli {

/// Runs one action with the arguments behind its name.
///
/// @return an `ExitCode`
/// @throw UsageError for wrong usage
int runAnnotationsAdd(const std::vector<std::string>& arguments);
int runAnnotationsAppend(const std::vector<std::string>& arguments);
int runAnnotationsClear(const std::vector<std::string>& arguments);
int runAnnotationsCopy(const std::vector<std::string>& arguments);
int runAnnotationsExport(const std::vector<std::string>& arguments);
int runAnnotationsImport(const std::vector<std::string>& arguments);
int runAnnotationsList(const std::vector<std::string>& arguments);
int runAnnotationsValidate(const std::vector<std::string>& arguments);

/// Makes sure that an action was given its operands.
///
/// @param names  what they are, such as "FILE LABELS"; as many as `count`
/// @throw UsageError
void demandOperands(const std::vector<std::string>& operands, std::size_t count, const std::string& names);

/// The code of an action that is over.
int exitCodeOf(bool isDone);

/// Edits one file: has `change` change its annotations, saves it, and tells how that went.
///
/// @param change  `bool change(AnnotationEdit&)`; false, after a report, leaves the file alone
/// @return an `ExitCode`
template <typename Change>
int editFile(const std::string& path, const EditOptions& options, Diagnostics& diagnostics, Change change) {
    AnnotationEdit edit(path, options, diagnostics);
    diagnostics.beginInput(path);
    const bool isDone = edit.load() && change(edit) && edit.save();
    diagnostics.endInput();
    return exitCodeOf(isDone);
}

/// Does the same with the files of all inputs, one after the other, until the run is interrupted or the output fails.
///
/// @param process  `bool process(const std::string& file)`; false, after a report, for one that fails
/// @return whether all were done
template <typename Process>
bool forEachFile(const InputNames& inputs, const Output& output, Diagnostics& diagnostics, Process process) {
    bool isAllDone = true;
    for (std::size_t i = 0; i < inputs.size() && !Interrupt::requested() && output.getError().empty(); ++i) {
        diagnostics.beginInput(inputs.teller(i));
        const auto file = inputs.find(i, diagnostics);
        if (file) {
            diagnostics.renameInput(*file);
        }
        isAllDone = file && process(*file) && isAllDone;
        diagnostics.endInput();
    }
    return isAllDone && !Interrupt::requested();
}

}  // namespace Zantrix::Cli
