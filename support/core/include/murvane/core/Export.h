#pragma once

/// Marks what the shared library offers to programs; everything else stays hidden in it.
#define MURVANE_API __attribute__((visibility("default")))
