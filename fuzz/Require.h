#pragma once

#include <cstdio>
#include <cstdlib>

/// What must hold for every input: otherwise the fuzzer has a finding.
inline void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}
