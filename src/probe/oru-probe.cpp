// The program oru-probe: makes all checks and prints one line for each.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <span>
#include <stdexcept>
#include <string>

#include "command_line/command_line.h"
#include "probe/checks.h"
#include "probe/queries.h"
#include "probe/service.h"
#include "probe/verdict.h"
#include "snapshot/printable.h"

namespace probe {
namespace {

// Returns whether the check departed.
bool print(const std::string& name, const verdict& result) {
    const std::string line = name + ": " + result.line() + '\n';
    std::fputs(line.c_str(), stdout);
    return result.has_departed();
}

// A failure with an error is not an answer.
bool has_any_answer(const query_verdicts& queries) {
    return std::ranges::any_of(queries.all, [](const query_verdict& query) {
        return query.answering.has_passed() || query.answering.has_departed() ||
               query.failing.has_departed();
    });
}

// Returns the exit status.
int make_checks() {
    const video_service service;
    const query_verdicts queries = check_queries(service);
    if (!has_any_answer(queries)) {
        throw std::runtime_error(queries.first_failure.value_or(""));
    }
    bool departs = false;
    for (const auto& [name, answering, failing] : queries.all) {
        departs |= print(name, answering);
        departs |= print(std::string(name) + ", failing", failing);
    }
    for (const auto table :
         {object_checks, map_checks, getter_checks, native_checks, format_checks, manual_checks}) {
        for (const auto& [name, run] : table()) {
            verdict result;
            run(service, result);
            departs |= print(name, result);
        }
    }
    return command_line::finish("oru-probe", departs ? 1 : 0);
}

gboolean is_version_wanted = FALSE;

const GOptionEntry options[] = {
    {"version", 0, 0, G_OPTION_ARG_NONE, &is_version_wanted, "Show the version", nullptr},
};

int run(std::span<const char* const> /*arguments*/) {
    if (is_version_wanted != FALSE) {
        std::puts("oru-probe " ORU_VERSION);
        return command_line::finish("oru-probe", 0);
    }
    return make_checks();
}

const command_line::command probe{
    .name = "oru-probe",
    .arguments = nullptr,
    .summary = "Checks the client libraries through which it queries the video service.",
    .example = "ORU_SNAPSHOT=gate4.json oru-probe",
    .manual = "oru-probe(1)",
    .options = options,
    .run = run,
};

}  // namespace
}  // namespace probe

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit on file sizes fails instead
    try {
        return command_line::run(probe::probe, argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "oru-probe: %s\n", snapshot::printable(exception.what()).c_str());
        return 1;
    }
}
