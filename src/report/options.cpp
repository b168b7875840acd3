#include "report/options.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "report/output.h"

namespace {

const char* lost_help_prefix = nullptr;  // set while GLib may print its help

void check_help() {
    if (lost_help_prefix == nullptr) {
        return;
    }
    try {
        check_standard_output();
    } catch (const std::exception& error) {
        std::fputs(lost_help_prefix, stderr);
        std::fputs(error.what(), stderr);
        std::fputs("\n", stderr);
        _exit(EXIT_FAILURE);
    }
}

}  // namespace

gboolean parse_switches(GOptionContext* context, const GOptionEntry* switches, int argc,
                        char** argv, const char* lost_help, GError** error) {
    g_option_context_add_main_entries(context, switches, nullptr);
    lost_help_prefix = lost_help;
    std::atexit(check_help);
    const gboolean parsed = g_option_context_parse(context, &argc, &argv, error);
    lost_help_prefix = nullptr;
    return parsed;
}
