#pragma once

#include "annotations/ChunkScan.h"
#include "shell/Diagnostics.h"

/// What does not outlast that a file's annotations are written anew, told in warnings: a number for each kind.
namespace Zantrix::Cli {

/// What belongs to no annotation, and chunks that are wrong: it goes whatever becomes of the annotations.
void warnOfLostRemains(const ChunkScan& scan, Diagnostics& diagnostics);

/// What annotations have beside start, stop and label.
///
/// @param isLenient  the file was read leniently
void warnOfLostDetails(const ChunkScan& scan, bool isLenient, Diagnostics& diagnostics);

}  // namespace Zantrix::Cli
