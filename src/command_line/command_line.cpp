#include "command_line/command_line.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/printable.h"
#include "video/owned.h"

namespace command_line {
namespace {

struct free_texts {
    void operator()(char** texts) const noexcept { g_strfreev(texts); }
};

bool is_switch(const GOptionEntry& option) {
    return option.arg == G_OPTION_ARG_NONE;
}

// Returns whether the argument ends with the option, so that the next argument is its value.
bool ends_with(std::string_view argument, const GOptionEntry& option) {
    return argument == std::string("--") + option.long_name ||
           (argument.size() > 1 && argument[0] == '-' && argument[1] != '-' &&
            argument.back() == option.short_name);
}

// Throws if a value is attached to a switch; GLib would ignore it. The first argument is ignored.
void check_switches(std::span<const GOptionEntry> options, std::span<char*> arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--") {
            return;
        }
        for (const GOptionEntry& option : options) {
            const std::string name = std::string("--") + option.long_name;
            if (is_switch(option) && argument.starts_with(name + '=')) {
                throw wrong_usage("option " + name + " takes no value");
            }
            if (!is_switch(option) && ends_with(argument, option)) {
                ++i;
                break;
            }
        }
    }
}

std::string help_of(const command& command, GOptionContext* context) {
    g_set_prgname(command.name);
    g_option_context_set_summary(context, command.summary);
    const std::string closing =
        std::string("Example:\n  ") + command.example + "\n\nManual: " + command.manual;
    g_option_context_set_description(context, closing.c_str());
    const std::unique_ptr<char, release_block> help{
        g_option_context_get_help(context, TRUE, nullptr)};
    return help.get();
}

int parse_and_run(const command& command, int argc, char** argv) {
    gboolean is_help_wanted = FALSE;
    char** values = nullptr;
    std::vector<GOptionEntry> options(command.options.begin(), command.options.end());
    options.push_back(
        {"help", 'h', 0, G_OPTION_ARG_NONE, &is_help_wanted, "Show this help", nullptr});
    check_switches(options, {argv, static_cast<std::size_t>(argc)});
    options.push_back({G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY,
                       static_cast<void*>(&values), nullptr, command.arguments});
    options.push_back({});

    const owned_option_context context{g_option_context_new(nullptr)};
    g_option_context_set_help_enabled(context.get(), FALSE);
    g_option_context_add_main_entries(context.get(), options.data(), nullptr);
    owned_error error;
    g_option_context_parse(context.get(), &argc, &argv, std::out_ptr(error));
    const std::unique_ptr<char*, free_texts> owner{values};
    if (error != nullptr) {
        std::string message = snapshot::printable(error->message);
        message.front() = g_ascii_tolower(message.front());
        if (g_error_matches(error.get(), G_OPTION_ERROR, G_OPTION_ERROR_FAILED) != FALSE) {
            message += ": its value must be the next argument";  // -oFILE
        }
        throw wrong_usage(message);
    }
    if (is_help_wanted != FALSE) {
        std::fputs(help_of(command, context.get()).c_str(), stdout);
        return finish(std::string(command.name, std::strcspn(command.name, " ")).c_str(), 0);
    }

    const std::span<const char* const> arguments(values,
                                                 values != nullptr ? g_strv_length(values) : 0);
    for (const std::string_view argument : arguments) {
        if (argument.empty()) {
            throw wrong_usage("an argument is empty");
        }
    }
    if (arguments.size() > command.most_arguments) {
        throw wrong_usage("unexpected argument '" +
                          snapshot::printable(arguments[command.most_arguments]) + "'");
    }
    if (arguments.size() < command.fewest_arguments) {
        throw wrong_usage(std::string("too few arguments: expected ") + command.arguments);
    }
    return command.run(arguments);
}

}  // namespace

int run(const command& command, int argc, char** argv) {
    try {
        return parse_and_run(command, argc, argv);
    } catch (const wrong_usage& error) {
        std::fprintf(stderr, "%s: %s\nTry '%s --help'.\n", command.name, error.what(),
                     command.name);
        return 2;
    }
}

int finish(const char* program, int status, int lost) {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "%s: cannot write to standard output: %s\n", program,
                     std::strerror(errno));
        return lost;
    }
    return status;
}

}  // namespace command_line
