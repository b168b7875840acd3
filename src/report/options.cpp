#include "report/options.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <vector>

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

// Returns the switch that `argument` gives with a value, as in --switch=value, or NULL.
const GOptionEntry* switch_with_value(std::string_view argument, const GOptionEntry* switches) {
    for (const GOptionEntry* entry = switches; entry->long_name != nullptr; ++entry) {
        const std::string_view name = entry->long_name;
        if (argument.starts_with("--") && argument.substr(2).starts_with(name) &&
            argument.substr(2 + name.size()).starts_with('=')) {
            return entry;
        }
    }
    return nullptr;
}

}  // namespace

gboolean parse_switches(GOptionContext* context, const GOptionEntry* switches, int argc,
                        char** argv, const char* lost_help, GError** error) {
    // GLib takes what it knows out of argv.
    const std::vector<const char*> given(argv, argv + argc);

    g_option_context_add_main_entries(context, switches, nullptr);
    lost_help_prefix = lost_help;
    std::atexit(check_help);
    const gboolean parsed = g_option_context_parse(context, &argc, &argv, error);
    lost_help_prefix = nullptr;
    if (parsed == FALSE) {
        return FALSE;
    }
    for (const char* argument : given) {
        if (std::string_view(argument) == "--") {
            break;  // what follows is no option
        }
        if (const GOptionEntry* entry = switch_with_value(argument, switches)) {
            g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                        "Option --%s takes no value", entry->long_name);
            return FALSE;
        }
    }
    return TRUE;
}
