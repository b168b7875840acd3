#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/assertions_record.h"
#include "serverreport/sections.h"

namespace {

constexpr const char* record_directory = "/etc/oru/";
constexpr const char* record_name = "dsp-assertion";

void print_read_error(const std::filesystem::path& path, const glz::error_ctx& error) {
    const std::string line =
        "Failed reading '" + path.native() + "': " + glz::format_error(error) + '\n';
    if (std::fputs(line.c_str(), stderr) == EOF) {
        throw std::system_error(errno, std::generic_category(), "cannot write standard error");
    }
}

// Returns the record's text, or the empty text, after an error line, if it cannot be read.
std::string read_record(const std::filesystem::path& path,
                        const std::filesystem::file_status& status) {
    std::string record;
    glz::error_ctx error{.ec = glz::error_code::file_open_failure};
    std::error_code size_error;
    if (std::filesystem::is_regular_file(status) &&  // a read from anything else could block
        std::filesystem::file_size(path, size_error) <= record.max_size()) {
        error.ec = glz::file_to_buffer(record, path.native());
    }
    if (error) {
        print_read_error(path, error);
        record.clear();
    }
    return record;
}

}  // namespace

void print_previous_assertions() {
    const auto path = std::filesystem::path(record_directory) / record_name;
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    // With 32 bits, a status with a larger size or date cannot be read. The record exists, though.
    if (!std::filesystem::exists(status) && error != std::errc::value_too_large) {
        return;
    }
    std::string record = read_record(path, status);

    print_section_header("Previous DSP assertions");
    print_line(compact_record(std::move(record)));
    print_section_end();
}
