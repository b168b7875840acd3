// Checks of the queries: how each answers and how it fails.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "probe/service.h"
#include "probe/verdict.h"

namespace probe {

// A query that answers returns an object or TRUE and does not set the error. One that fails returns
// NULL or FALSE and sets the error. It does the same if the caller does not want the error.
struct query_verdict {
    const char* name;
    verdict answering = {};
    verdict failing = {};

    // As those of a verdict, for the two together.
    void add(const query_verdict& other);
    bool has_departed() const;
    bool has_passed() const;
};

struct query_verdicts {
    std::vector<query_verdict> all;
    std::optional<std::string> first_failure;  // its message
};

query_verdicts check_queries(const video_service& service);

}  // namespace probe
