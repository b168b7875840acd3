// The pieces through which report text reaches standard output. Everything goes through the one
// stdio stream, so that GLib's own prints keep their place among ours.
#pragma once

#include <format>
#include <string>
#include <string_view>

// Prints `text` as it is. A write that fails is thrown as a std::system_error.
void print(std::string_view text);

// Prints one line: `text`, or the format with `value` in place of its {}. Throws like print().
void print_line(std::string_view text);

template <class Value>
void print_line(std::format_string<const Value&> format, const Value& value) {
    print(std::format(format, value) + '\n');
}

// The frame of a report section: its title line and an empty line before, an empty line after. A
// write that fails here is told by check_standard_output().
void print_section_header(const char* title);
void print_section_end();

// Flushes standard output and throws a std::system_error when anything printed so far, GLib's
// prints included, did not arrive.
void check_standard_output();
