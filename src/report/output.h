// Functions that print report text to standard output. All of them write to the one stdio stream,
// as GLib's own prints do, so that every text comes out in the order in which it was printed.
#pragma once

#include <cstdint>
#include <string_view>

#include "report/line_format.h"

// Prints `text`. Throws a std::system_error if the write fails.
void print(std::string_view text);

// These print one line: `text`, or `format` with its {} replaced by `value`. They throw as print()
// does.
void print_line(std::string_view text);
void print_line(line_format format, std::string_view value);
void print_line(line_format format, std::uint32_t value);

// These print the title line of a section and an empty line, and the empty line after the section.
// check_standard_output() reports a write that fails here.
void print_section_header(const char* title);
void print_section_end();

// Flushes standard output. Throws a std::system_error if any text printed so far, by GLib too,
// could not be written.
void check_standard_output();
