#include "serverreport/serverreport_tool.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include <glib.h>
#include <glib/gprintf.h>

#include "report/options.h"
#include "report/output.h"
#include "serverreport/sections.h"
#include "video/owned.h"

namespace {

constexpr const char* parameters = "\"{ 'key': <type value>, ... >}\"";
constexpr const char* summary =
    "Tool for populating oru information to the serverreport\n"
    "Prints everything when no options are provided.\n";
constexpr const char* description =
    "Examples:\n"
    "  oru-serverreport-tool --list-streams\n"
    "  oru-serverreport-tool --list-channels\n"
    "  oru-serverreport-tool --list-output\n"
    "  oru-serverreport-tool --stream-quotas\n"
    "  oru-serverreport-tool --list-available-resolutions\n"
    "  oru-serverreport-tool --list-resolutions\n"
    "  oru-serverreport-tool --list-inputs\n";

struct switches {
    gboolean list_streams = FALSE;
    gboolean stream_quotas = FALSE;
    gboolean list_output = FALSE;
    gboolean list_channels = FALSE;
    gboolean list_resolutions = FALSE;  // accepted, but no section belongs to it
    gboolean list_available_resolutions = FALSE;
    gboolean list_inputs = FALSE;
};

switches parse(GOptionContext* context, int argc, char** argv) {
    switches requested;
    const GOptionEntry options[] = {
        {"list-streams", 'l', 0, G_OPTION_ARG_NONE, &requested.list_streams,
         "List existing streams", nullptr},
        {"stream-quotas", 'q', 0, G_OPTION_ARG_NONE, &requested.stream_quotas,
         "Display quotas and limits for streams", nullptr},
        {"list-output", 'o', 0, G_OPTION_ARG_NONE, &requested.list_output,
         "Display information about HDMI", nullptr},
        {"list-channels", 'c', 0, G_OPTION_ARG_NONE, &requested.list_channels,
         "List existing channels", nullptr},
        {"list-resolutions", 'r', 0, G_OPTION_ARG_NONE, &requested.list_resolutions,
         "List resolutions for encoded formats and YUV", nullptr},
        {"list-available-resolutions", 'a', 0, G_OPTION_ARG_NONE,
         &requested.list_available_resolutions, "List available resolutions", nullptr},
        {"list-inputs", 'i', 0, G_OPTION_ARG_NONE, &requested.list_inputs, "List existing inputs",
         nullptr},
        {},
    };
    g_option_context_set_summary(context, summary);
    g_option_context_set_description(context, description);
    g_option_context_add_main_entries(context, options, nullptr);

    const owned_error error =
        parse_options(context, argc, argv, "oru-serverreport-tool: Exception ");
    if (error != nullptr) {
        // The callers rely on this wording and on the missing newline.
        g_fprintf(stderr, "oru-serverreport-tool: Failed t parse options: %s.", error->message);
        std::exit(EXIT_FAILURE);
    }
    return requested;
}

void run_sections(const switches& requested) {
    print_previous_assertions();
    if (requested.list_streams != FALSE) {
        list_streams();
    }
    if (requested.stream_quotas != FALSE) {
        print_stream_quotas();
    }
    if (requested.list_output != FALSE) {
        list_output();
    }
    if (requested.list_channels != FALSE) {
        list_channels();
    }
    if (requested.list_available_resolutions != FALSE) {
        list_available_resolutions();
    }
    if (requested.list_inputs != FALSE) {
        list_inputs();
    }
    check_standard_output();
}

}  // namespace

int serverreport_tool_main(int argc, char** argv) {
    if (argv == nullptr) {
        std::exit(EXIT_FAILURE);
    }
    const owned_option_context context{g_option_context_new(parameters)};
    if (context == nullptr) {
        g_fprintf(stderr, "oru-serverreport-tool: Failed to create option context.");
        std::exit(EXIT_FAILURE);
    }
    try {
        run_sections(parse(context.get(), argc, argv));
    } catch (const std::exception& exception) {
        g_fprintf(stderr, "oru-serverreport-tool: Exception %s\n", exception.what());
        std::exit(EXIT_FAILURE);
    }
    return 0;
}
