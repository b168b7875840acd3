// An assertion of a fuzz target. A failed one is reported on standard error and aborts the process,
// so that the fuzzer reports the input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

inline void require(bool condition, const char* requirement, std::string_view shown = "") {
    if (condition) {
        return;
    }
    std::fprintf(stderr, "not met: %s\n%.*s\n", requirement, static_cast<int>(shown.size()),
                 shown.data());
    std::abort();
}
