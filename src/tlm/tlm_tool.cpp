#include "tlm/tlm_tool.h"

#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <glib.h>

#include "applet/fatal.h"
#include "report/options.h"
#include "report/output.h"
#include "tlm/identity_info.h"
#include "tlm/stream_max_stats.h"
#include "tlm/system_info.h"
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

// GLib ignores a value attached to a switch, as in --system-info=no; here it is an error. Returns
// it, or NULL.
owned_error attached_value(const std::vector<std::string_view>& arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--") {
            break;  // what follows is no option
        }
        for (const GOptionEntry* entry = options; entry->long_name != nullptr; ++entry) {
            const std::string name = std::string("--") + entry->long_name;
            if (argument.starts_with(name + '=')) {
                return owned_error{g_error_new(G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                                               "Option %s takes no value", name.c_str())};
            }
        }
    }
    return nullptr;
}

void run(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);  // GLib changes argv

    owned_option_context context{g_option_context_new(parameters)};
    if (context == nullptr) {
        tlm_fatal("Failed creating option context");
    }
    g_option_context_set_summary(context.get(), summary);
    g_option_context_set_description(context.get(), description);
    owned_error error;
    if (parse_switches(context.get(), options, argc, argv,
                       "oru-tlm-tool: Exception: ", std::out_ptr(error)) != FALSE) {
        error = attached_value(arguments);
    }
    if (error != nullptr) {
        context.reset();
        tlm_fatal(std::move(error));
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
        throw;  // nobody further up handles it, and without a handler nothing would be released
    }
    return 0;
}
