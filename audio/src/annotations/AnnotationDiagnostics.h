#pragma once

#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>

/// What the annotation classes report with, whichever file a class lives in.
namespace Zantrix::Audio {

inline constexpr const char* c_szAnnotationSource = "AudioAnnotation";

const Logger& annotationLogger();

}  // namespace Zantrix::Audio
