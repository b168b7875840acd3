#include "probe/probe.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "probe/checks.h"
#include "probe/queries.h"
#include "probe/service.h"
#include "probe/verdict.h"

namespace {

// Returns whether the check departed.
bool print(const std::string& name, const verdict& found) {
    const std::string line = name + ": " + found.text() + '\n';
    std::fputs(line.c_str(), stdout);
    return found.has_departed();
}

bool is_reached(const query_verdicts& queries) {
    const auto says_anything = [](const query_verdict& query) {
        return query.answering.is_ok() || query.answering.has_departed() ||
               query.failing.has_departed();
    };
    return std::ranges::any_of(queries.all, says_anything);
}

}  // namespace

std::optional<int> probe(int argc, char**) {
    if (argc > 1) {
        return std::nullopt;
    }
    const probed_service service;
    const query_verdicts queries = probe_queries(service);
    if (!is_reached(queries)) {
        throw std::runtime_error(queries.first_failure.value_or(""));
    }
    bool departs = false;
    for (const auto& [name, answering, failing] : queries.all) {
        departs |= print(name, answering);
        departs |= print(std::string(name) + ", failing", failing);
    }
    for (const auto checks :
         {object_checks, map_checks, getter_checks, native_checks, format_checks, sights}) {
        for (const auto& [name, run] : checks()) {
            verdict told;
            run(service, told);
            departs |= print(name, told);
        }
    }
    return finish(departs ? 1 : 0);
}
