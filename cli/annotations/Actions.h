#pragma once

#include "annotations/AnnotationEdit.h"
#include "shell/Diagnostics.h"

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

}  // namespace Zantrix::Cli
