#pragma once

#include "annotations/Recording.h"
#include "annotations/ToneKind.h"

#include <string>

namespace Zantrix::Cli {

/// How annotations are listed: a function for the annotations of one file, and what surrounds them all.
struct ListFormat {
    const char* name;
    std::string (*write)(const std::string& file, const Recording& recording, ToneKinds& kinds, bool isFirst);
    const char* endOfNone;  ///< what ends the output when no file was listed
    const char* end;
};

/// @throw UsageError  naming the formats
const ListFormat& chooseListFormat(const std::string& name);

}  // namespace Zantrix::Cli
