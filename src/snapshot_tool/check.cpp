#include <algorithm>
#include <cstdio>
#include <limits>
#include <variant>

#include "snapshot/printable.h"
#include "snapshot_tool/command.h"

namespace snapshot_tool {
namespace {

// Returns whether a query has another answer than a failure.
bool answers_a_query(const snapshot::answers& answers) {
    bool is_any_answered = false;
    snapshot::records::each_answer([&]<class T>(const snapshot::document_member&,
                                                snapshot::answer<T> snapshot::records::* member) {
        const auto* content = std::get_if<T>(&(answers.*member));
        if constexpr (requires { content->front().fails; }) {
            // There is no query for the list, only one for each object.
            is_any_answered |=
                content != nullptr &&
                std::ranges::any_of(*content, [](const auto& object) { return !object.fails; });
        } else {
            is_any_answered |= content != nullptr;
        }
    });
    return is_any_answered;
}

int check_files(std::span<const char* const> files) {
    std::ranges::for_each(files, require_may_open);
    int status = 0;
    for (const char* file : files) {
        if (const auto loaded = load_file(file)) {
            std::printf("%s: ok%s\n", name_of(file).c_str(),
                        answers_a_query(**loaded) ? "" : ", but it answers no query");
        } else {
            std::fprintf(stderr, "%s\n", snapshot::printable(loaded.error()).c_str());
            status = 1;
        }
    }
    return finish(status);
}

}  // namespace

const command check{
    .name = "oru-snapshot check",
    .arguments = "FILE...",
    .fewest_arguments = 1,
    .most_arguments = std::numeric_limits<std::size_t>::max(),
    .summary = "Checks whether each FILE is a snapshot.",
    .example = "oru-snapshot check gate4.json",
    .manual = "oru-snapshot(1)",
    .run = check_files,
};

}  // namespace snapshot_tool
