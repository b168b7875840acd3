// The pieces through which report text reaches standard output. Everything goes through the one
// stdio stream, so that GLib's own prints keep their place among ours.
#pragma once

#include <cstdint>
#include <string_view>

#include "report/line_format.h"

// Prints `text` as it is. A write that fails is thrown as a std::system_error.
void print(std::string_view text);

// Prints one line: `text`, or the format with `value` in place of its {}. Throws like print().
void print_line(std::string_view text);
void print_line(line_format format, std::string_view value);
void print_line(line_format format, std::uint32_t value);

// The frame of a report section: its title line and an empty line before, an empty line after. A
// write that fails here is told by check_standard_output().
void print_section_header(const char* title);
void print_section_end();

// Flushes standard output and throws a std::system_error when anything printed so far, GLib's
// prints included, did not arrive.
void check_standard_output();
