// The program oru-probe: makes all checks and prints one line for each.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

#include "probe/checks.h"
#include "probe/queries.h"
#include "probe/service.h"
#include "probe/verdict.h"
#include "snapshot/printable.h"

namespace probe {
namespace {

constexpr auto usage = "Usage: oru-probe [--help | --version]\n";

// Returns `status` if standard output was written in full. Otherwise reports the error and returns
// 1.
int finish(int status) {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "oru-probe: cannot write to standard output: %s\n",
                     std::strerror(errno));
        return 1;
    }
    return status;
}

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
    return finish(departs ? 1 : 0);
}

int run(int argc, char** argv) {
    if (argc < 2) {
        return make_checks();
    }
    const std::string_view argument = argv[1];
    if (argc == 2 && argument == "--help") {
        std::fputs(usage, stdout);
        return finish(0);
    }
    if (argc == 2 && argument == "--version") {
        std::puts("oru-probe " ORU_VERSION);
        return finish(0);
    }
    std::fputs(usage, stderr);
    return 2;
}

}  // namespace
}  // namespace probe

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit on file sizes fails instead
    try {
        return probe::run(argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "oru-probe: %s\n", snapshot::printable(exception.what()).c_str());
        return 1;
    }
}
