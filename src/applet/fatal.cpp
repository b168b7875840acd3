#include "applet/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

[[noreturn]] void fatal(const char* prefix, const std::string& message) {
    std::fputs(prefix, stderr);
    std::fputs((message + '\n').c_str(), stderr);
    std::exit(EXIT_FAILURE);
}

constexpr const char* tlm_prefix = "oru-tlm-tool: ";
constexpr const char* serverreport_prefix = "oru-serverreport-tool: ";

}  // namespace

void tlm_fatal(const char* message) {
    fatal(tlm_prefix, message);
}

void tlm_fatal(owned_error option_error) {
    const std::string message = std::format("Option parsing failed: {}", option_error.get());
    option_error.reset();
    fatal(tlm_prefix, message);
}

void tlm_fatal(const std::exception& exception) {
    fatal(tlm_prefix, std::format("Exception: {}", exception.what()));
}

void serverreport_fatal(std::format_string<GError*&> format, GError* error) {
    fatal(serverreport_prefix, std::format(format, error));
}
