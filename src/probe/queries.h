// How each query of the service answers and fails.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "probe/service.h"
#include "probe/verdict.h"

// What a query was found to do: one that answers gives something and leaves the error alone, one
// that fails gives NULL or FALSE and sets the error; with an error asked for and without, it does
// the same.
struct query_verdict {
    const char* name;
    verdict answering;
    verdict failing;

    // As those of a verdict, of the two together.
    void add(const query_verdict& other);
    bool has_departed() const;
    bool is_ok() const;
};

struct query_verdicts {
    std::vector<query_verdict> all;
    std::optional<std::string> first_failure;  // its message
};

query_verdicts probe_queries(const probed_service& service);
