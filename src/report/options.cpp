#include "report/options.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>

#include "report/output.h"

namespace {

const char* error_prefix = nullptr;  // set while GLib may print the help

void check_help_at_exit() {
    if (error_prefix == nullptr) {
        return;
    }
    try {
        check_standard_output();
    } catch (const std::exception& error) {
        std::fputs(error_prefix, stderr);
        std::fputs(error.what(), stderr);
        std::fputs("\n", stderr);
        _exit(EXIT_FAILURE);
    }
}

}  // namespace

owned_error parse_options(GOptionContext* context, int argc, char** argv, const char* help_error) {
    error_prefix = help_error;
    std::atexit(check_help_at_exit);
    owned_error error;
    g_option_context_parse(context, &argc, &argv, std::out_ptr(error));
    error_prefix = nullptr;
    return error;
}
