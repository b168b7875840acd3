// What a fuzz target demands of the code under test: a demand that is not met is said on standard
// error and ends the process, which the fuzzer takes as a find.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

inline void require(bool met, const char* demand, std::string_view shown = "") {
    if (met) {
        return;
    }
    std::fprintf(stderr, "not met: %s\n%.*s\n", demand, static_cast<int>(shown.size()),
                 shown.data());
    std::abort();
}
