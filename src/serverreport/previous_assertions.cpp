#include "serverreport/previous_assertions.h"

#include <cstdio>
#include <filesystem>
#include <format>
#include <string>
#include <system_error>
#include <utility>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/assertions_record.h"

namespace {

constexpr const char* record_directory = "/etc/oru/";
constexpr const char* record_name = "dsp-assertion";

std::string read_record(const std::filesystem::path& path) {
    std::string record;
    const glz::error_ctx error{.ec = glz::file_to_buffer(record, path.native())};
    if (error) {
        std::fputs(std::format("Failed reading '{}': {}\n", path.native(), glz::format_error(error))
                       .c_str(),
                   stderr);
        record.clear();
    }
    return record;
}

}  // namespace

void print_previous_assertions() {
    const auto path = std::filesystem::path(record_directory) / record_name;
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::status(path, error))) {
        return;
    }
    std::string record = read_record(path);

    print_section_header("Previous DSP assertions");
    print_line(compact_record(std::move(record)));
    print_section_end();
}
