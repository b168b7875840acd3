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
constexpr std::array command_line = {"g_option_context_set_", "g_option_context_add_"};
constexpr std::array prints = {"g_print(", "fwrite("};

// Appends a line of the log. Joins a printed text to the printed text before it.
void append_step(std::string& steps, std::string_view line) {
    static constexpr std::string_view end_of_print = "\")\n";
    if (!starts_with_any(line, prints)) {
        steps += std::string(line) + '\n';
        return;
    }
    line.remove_prefix(line.find('"') + 1);
    const std::size_t last_line = steps.rfind('\n', steps.size() - 2) + 1;
    if (steps.compare(last_line, 6, "print(") == 0) {
        steps.resize(steps.size() - end_of_print.size());
    } else {
        steps += "print(\"";
    }
    steps += std::string(line) + '\n';
}

using run_tool = result(std::string_view, const std::vector<std::string>&, const run_options&);

calls calls_of(run_tool tool, std::string_view snapshot, const std::vector<std::string>& arguments,
               const std::vector<std::string>& extra_environment, const std::string& stdout_to) {
    setenv("ORU_TEST_BIN_DIR", ORU_STRICT_BIN_DIR, 0);
    const temp_directory directory;
    const std::string log = directory.path() + "/log";
    run_options options{.stdout_to = stdout_to, .environment = {"ORU_STRICT_LOG=" + log}};
    options.environment.insert(options.environment.end(), extra_environment.begin(),
                               extra_environment.end());

    calls logged{.ended = tool(snapshot, arguments, options)};
    std::ifstream file(log);
    for (std::string line; std::getline(file, line);) {
        if (starts_with_any(line, reads)) {
            logged.reads.insert(line);
        } else if (starts_with_any(line, classes)) {
            logged.classes += line + '\n';
        } else if (starts_with_any(line, command_line)) {
            logged.command_line += line + '\n';
        } else {
            append_step(logged.steps, line);
            if (!line.starts_with("fwrite(")) {
                logged.queries += line + '\n';
            }
        }
    }
    return logged;
}

}  // namespace

calls tlm_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                const std::vector<std::string>& extra_environment, const std::string& stdout_to) {
    return calls_of(tlm, snapshot, arguments, extra_environment, stdout_to);
}

calls report_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& extra_environment,
                   const std::string& stdout_to) {
    return calls_of(report, snapshot, arguments, extra_environment, stdout_to);
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
