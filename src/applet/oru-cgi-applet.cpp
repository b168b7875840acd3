// The program's entry. Selects the tool by the name under which the program was started.

#include <assert.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "serverreport/serverreport_tool.h"
#include "tlm/tlm_tool.h"

// Prints what assert() prints, with the same text for every compiler and build folder: compilers
// write the signature of main differently, and __FILE__ contains a path. Active in every build
// type.
#define APPLET_ASSERT(expression) \
    ((expression)                 \
         ? void()                 \
         : __assert_fail(#expression, "oru-cgi-applet.cpp", __LINE__, "int main(int, char**)"))

int main(int argc, char** argv) {
    APPLET_ASSERT(argc > 0);
    APPLET_ASSERT(argv);
    APPLET_ASSERT(argv[0]);

    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit on file sizes fails instead
    try {
        const auto name = std::filesystem::path(argv[0]).filename();
        if (name.native() == "oru-tlm-tool") {
            return tlm_tool_main(argc, argv);
        }
        if (name.native() == "oru-serverreport-tool") {
            return serverreport_tool_main(argc, argv);
        }
        std::fputs("oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!\n", stderr);
        return EXIT_FAILURE;
    } catch (const std::exception& exception) {
        // The programs that start the tools rely on status 0.
        std::fprintf(stderr, "oru-cgi-applet: %s\n", exception.what());
        return EXIT_SUCCESS;
    }
}
