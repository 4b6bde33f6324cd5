#pragma once

// What the tests of annotations share.
#include <murvane/audio/annotations/AudioAnnotation.h>
#include <murvane/core/MemAccount.h>
#include <testkit/LogRecorder.h>

#include <cstdint>
#include <string>

namespace annotation_test {

/// A record of annotations in general, as the base implementation, the builder and the annotated file make them.
inline testkit::LogRecord record(int level, const std::string& message) {
    return {"murvane.audio.annotation", level, message, "AudioAnnotation", {}};
}

/// What every class reports of a null label.
inline const testkit::LogRecord c_nullLabel = testkit::failedAssertion("in_szLabel", "AudioAnnotation");

/// Objects alive in an account.
inline std::int64_t live(const char* account) {
    return Zantrix::MemAccount::named(account).live();
}

}  // namespace annotation_test
