#include "snapshot_tool/description.h"

#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/files.h"

std::optional<int> print_description(int argc, char** argv,
                                     std::string (*describe)(const device&)) {
    const std::string_view file = argc > 1 ? argv[1] : "-";
    if (argc > 2 || (file.starts_with('-') && file != "-")) {
        return std::nullopt;
    }
    if (argc > 1 && !answer_from(argv[1])) {
        return 2;
    }
    const device asked = ask_device();
    if (!asked.reached) {
        throw std::runtime_error(printable(asked.reached.error()));
    }
    std::fputs(describe(asked).c_str(), stdout);
    return finish(0);
}
