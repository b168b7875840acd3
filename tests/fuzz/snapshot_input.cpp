#include "fuzz/snapshot_input.h"

#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <stdexcept>

#include <oru.h>
#include <qwire.h>

#include "applet/fatal.h"
#include "fuzz/json_text.h"
#include "fuzz/require.h"
#include "replay/current.h"
#include "video/error_message.h"
#include "video/owned.h"

namespace {

// The fatal routines below throw this instead of exiting. It is not a standard exception, so that
// only run_section() catches it.
struct fatal_exit {
    std::string message;
};

// Registers the video formats from an empty file: they are registered once in a process, so they
// must not depend on the first input.
int make_file() {
    const int file = memfd_create("snapshot", 0);
    require(file >= 0, "a file in memory");
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    require(setenv("ORU_SNAPSHOT", path.c_str(), 1) == 0, "setenv");
    oru_format_get_type();
    return file;
}

int snapshot_file() {
    static const int file = make_file();
    return file;
}

}  // namespace

void answer_from(std::string_view input) {
    const int file = snapshot_file();
    require(ftruncate(file, 0) == 0, "an empty file");
    require(pwrite(file, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()),
            "the input in the file");
    replay::reset();
}

bool mode_breaks_off() {
    constexpr std::size_t deepest = 127 - 1;  // one level is the document around the map
    const owned_object<OruMode> mode{oru_mode_new(nullptr)};
    const owned_object<OruMap> info{mode ? oru_mode_get_info(mode.get(), nullptr) : nullptr};
    std::string text;
    return info && oru_map_native_ref(info.get())->to_json(text) && nesting(text) > deepest;
}

outcome run_section(void (*section)()) {
    outcome result;
    char* text = nullptr;
    std::size_t size = 0;
    FILE* const real_stdout = stdout;
    stdout = open_memstream(&text, &size);
    require(stdout != nullptr, "a stream in memory");
    try {
        section();
    } catch (const fatal_exit& exit) {
        result.fatal = exit.message;
    } catch (const std::runtime_error& error) {
        result.exception = error.what();
    }
    fclose(stdout);
    stdout = real_stdout;
    result.out.assign(text, size);
    free(text);
    return result;
}

void tlm_fatal(const char* message) {
    throw fatal_exit{message};
}

void tlm_fatal(owned_error option_error, owned_option_context) {
    throw fatal_exit{message_of(option_error.get())};
}

void tlm_fatal(const std::exception& exception) {
    throw fatal_exit{exception.what()};
}

void serverreport_fatal(line_format format, const GError* error) {
    throw fatal_exit{format.with(message_of(error))};
}
