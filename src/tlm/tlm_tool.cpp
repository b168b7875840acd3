#include "tlm/tlm_tool.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include <glib.h>

#include "applet/fatal.h"
#include "report/options.h"
#include "report/output.h"
#include "tlm/sections.h"
#include "video/owned.h"

namespace {

gboolean stream_max_stats = FALSE;
gboolean system_info = FALSE;
gboolean identity_info = FALSE;

const GOptionEntry options[] = {
    {"stream-max-stats", 'q', 0, G_OPTION_ARG_NONE, &stream_max_stats,
     "Display quotas and limits for streams", nullptr},
    {"system-info", 's', 0, G_OPTION_ARG_NONE, &system_info, "Display relevant system info for oru",
     nullptr},
    {"identity-info", 'i', 0, G_OPTION_ARG_NONE, &identity_info,
     "Display the identity and number of times they started a stream", nullptr},
    {},
};

constexpr const char* parameters = "\"{ 'key': <type value>, ... >}\"";
constexpr const char* summary =
    "Tool for populating oru information to tlm\n"
    "Prints everything when no options are provided.\n";
constexpr const char* description =
    "Examples:\n"
    "  oru-tlm-tool --stream-max-stats\n"
    "  oru-tlm-tool --identity-info\n"
    "  oru-tlm-tool --system-info\n";

// Returns the switch to which the argument attaches a value, such as --system-info for
// --system-info=no, otherwise the empty text.
std::string switch_with_value(std::string_view argument) {
    for (const GOptionEntry* entry = options; entry->long_name != nullptr; ++entry) {
        const std::string name = std::string("--") + entry->long_name;
        if (argument.starts_with(name + '=')) {
            return name;
        }
    }
    return "";
}

// Sets the switches that the command line contains. A value attached to a switch is an error; GLib
// would ignore it. The first argument that is wrong or asks for help decides, so GLib gets only the
// arguments before the value.
owned_error parse(GOptionContext* context, int argc, char** argv) {
    char** const end = std::find_if(argv + 1, argv + argc, [](std::string_view argument) {
        return argument == "--" || !switch_with_value(argument).empty();
    });
    const std::string name = end != argv + argc ? switch_with_value(*end) : "";

    owned_error error =
        parse_options(context, static_cast<int>(end - argv), argv, "oru-tlm-tool: Exception: ");
    if (error == nullptr && !name.empty()) {
        error.reset(g_error_new(G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                                "Option %s takes no value", name.c_str()));
    }
    return error;
}

void run(int argc, char** argv) {
    owned_option_context context{g_option_context_new(parameters)};
    if (context == nullptr) {
        tlm_fatal("Failed creating option context");
    }
    g_option_context_set_summary(context.get(), summary);
    g_option_context_set_description(context.get(), description);
    g_option_context_add_main_entries(context.get(), options, nullptr);
    owned_error error = parse(context.get(), argc, argv);
    if (error != nullptr) {
        tlm_fatal(std::move(error), std::move(context));
    }

    if (stream_max_stats != FALSE) {
        print_stream_max_stats();
    }
    if (system_info != FALSE) {
        print_system_info();
    }
    if (identity_info != FALSE) {
        print_identity_info();
    }
    check_standard_output();
}

}  // namespace

int tlm_tool_main(int argc, char** argv) {
    try {
        run(argc, argv);
    } catch (const std::exception& exception) {
        tlm_fatal(exception);
    } catch (...) {
        throw;  // no caller catches it, and without a handler here no owner would release anything
    }
    return 0;
}
