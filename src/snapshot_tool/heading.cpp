#include "snapshot_tool/heading.h"

#include <unistd.h>

#include <ctime>
#include <format>

#include "replay/origin.h"
#include "snapshot/printable.h"
#include "snapshot/utc_time.h"
#include "snapshot_tool/command.h"

namespace snapshot_tool {
namespace {

// Returns such as ", 3 hours ago"; nothing for a time in the future.
std::string age_of(std::string_view recorded) {
    constexpr std::int64_t minute = 60;
    constexpr std::int64_t hour = 60 * minute;
    constexpr std::int64_t day = 24 * hour;
    const auto then = snapshot::seconds_of(recorded);
    const std::int64_t age = then ? std::time(nullptr) - *then : -1;
    if (age < 0) {
        return "";
    }
    const auto text = [&](std::int64_t unit, std::string_view name) {
        return std::format(", {} {}{} ago", age / unit, name, age / unit == 1 ? "" : "s");
    };
    return age < 2 * minute ? text(1, "second")
           : age < 2 * hour ? text(minute, "minute")
           : age < 2 * day  ? text(hour, "hour")
                            : text(day, "day");
}

}  // namespace

heading heading_of(const char* file, const snapshot::answers& answers) {
    if (file != nullptr) {
        return {.name = name_of(file),
                .about = std::optional<std::string>(answers.about),
                .recorded = std::optional<std::string>(answers.recorded)};
    }
    if (const auto origin = replay::answers_origin()) {
        return {.name = snapshot::printable(origin->path),
                .about = origin->about,
                .recorded = origin->recorded};
    }
    return {.name = "video service", .about = {}, .recorded = {}};
}

void add_heading(page& page, const heading& heading) {
    page.add("", heading.name);
    if (heading.about) {
        page.add("", snapshot::printable(*heading.about));
    }
    if (heading.recorded) {
        page.add("", "recorded " + *heading.recorded +
                         (isatty(STDOUT_FILENO) == 1 ? age_of(*heading.recorded) : ""));
    }
}

}  // namespace snapshot_tool
