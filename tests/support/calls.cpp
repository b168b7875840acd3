#include "support/calls.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>

#include "support/temp_directory.h"

namespace {

bool starts_with_any(std::string_view line, const auto& beginnings) {
    return std::ranges::any_of(beginnings,
                               [&](const char* each) { return line.starts_with(each); });
}

constexpr std::array reads = {"oru_map_get_", "oru_map_contains(", "oru_map_empty(",
                              "oru_map_native_ref(", "find("};
constexpr std::array classes = {"g_type_class_"};

using run_tool = result(std::string_view, const std::vector<std::string>&, const run_options&);

calls calls_of(run_tool tool, std::string_view snapshot, const std::vector<std::string>& arguments,
               const std::vector<std::string>& more) {
    setenv("ORU_TEST_BIN_DIR", ORU_STRICT_BIN_DIR, 0);
    const temp_directory directory;
    const std::string log = directory.path() + "/log";
    run_options options{.environment = {"ORU_STRICT_LOG=" + log}};
    options.environment.insert(options.environment.end(), more.begin(), more.end());

    calls made{.ended = tool(snapshot, arguments, options)};
    std::ifstream file(log);
    for (std::string line; std::getline(file, line);) {
        if (starts_with_any(line, reads)) {
            made.reads.insert(line);
        } else if (starts_with_any(line, classes)) {
            made.classes += line + '\n';
        } else {
            made.queries += line + '\n';
        }
    }
    return made;
}

}  // namespace

calls tlm_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                const std::vector<std::string>& more) {
    return calls_of(tlm, snapshot, arguments, more);
}

calls report_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& more) {
    return calls_of(report, snapshot, arguments, more);
}

std::set<std::string> lines_of(std::string_view text) {
    std::set<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.emplace(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}
