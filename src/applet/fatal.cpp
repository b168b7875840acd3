#include "applet/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "video/error_message.h"

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

void tlm_fatal(owned_error option_error, owned_option_context context) {
    const auto message = std::string("Option parsing failed: ") + message_of(option_error.get());
    option_error.reset();
    context.reset();
    fatal(tlm_prefix, message);
}

void tlm_fatal(const std::exception& exception) {
    fatal(tlm_prefix, std::string("Exception: ") + exception.what());
}

void serverreport_fatal(line_format format, const GError* error) {
    fatal(serverreport_prefix, format.with(message_of(error)));
}
