#pragma once

#include <murvane/core/Export.h>

namespace Zantrix {

/// Checks an invariant without ever stopping the program. A failed one logs a single ERROR record on
/// "murvane.core.Assertion": "Assertion failed: " and the text, with the source name and line as its location.
///
/// @param condition      what must hold
/// @param conditionText  the condition as written, for the record
/// @param sourceName     name of the source that checks (no path)
/// @param line           line within that source
/// @return `condition`, so that the caller can return its failure value
MURVANE_API bool Assertion(bool condition, const char* conditionText, const char* sourceName, int line);

/// Told of every failed assertion, after it was logged.
using AssertionHandler = void (*)(const char* conditionText, const char* sourceName, int line);

/// Installs a handler (null for none) and returns the previous one. Safe to call from any thread.
MURVANE_API AssertionHandler setAssertionHandler(AssertionHandler handler);

}  // namespace Zantrix
