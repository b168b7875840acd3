#include "report/output.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include <glib.h>

namespace {

[[noreturn]] void throw_output_error(int code) {
    throw std::system_error(code != 0 ? code : EIO, std::generic_category(),
                            "cannot write standard output");
}

}  // namespace

void print(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw_output_error(errno);
    }
}

void print_line(std::string_view text) {
    print(text);
    print("\n");
}

void print_line(line_format format, std::string_view value) {
    print(format.with(value) + '\n');
}

void print_line(line_format format, std::uint32_t value) {
    print_line(format, std::to_string(value));
}

// g_print() flushes the stream, so that a run which is killed has written its sections so far.
void print_section_header(const char* title) {
    g_print("----- %s -----\n\n", title);
}

void print_section_end() {
    g_print("\n");
}

void check_standard_output() {
    errno = 0;
    if (std::fflush(stdout) != 0) {
        throw_output_error(errno);
    }
    // GLib ignores a write that fails. The stream keeps the fact, but not the reason.
    if (std::ferror(stdout) != 0) {
        throw_output_error(EIO);
    }
}
