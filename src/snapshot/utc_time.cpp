#include "snapshot/utc_time.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace snapshot {

std::optional<std::int64_t> seconds_of(std::string_view utc_time) {
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    const auto fits = [](char expected, char c) {
        return expected == '0' ? c >= '0' && c <= '9' : c == expected;
    };
    if (!std::ranges::equal(form, utc_time, fits)) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = 0;
        std::from_chars(utc_time.data() + at, utc_time.data() + at + digits, value);
        return value;
    };
    using namespace std::chrono;
    const year_month_day date(year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                              day(static_cast<unsigned>(number(8, 2))));
    const int hour = number(11, 2);
    const int minute = number(14, 2);
    const int second = number(17, 2);
    if (date.year() == year(0) || !date.ok() || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    const std::int64_t days = sys_days(date).time_since_epoch().count();
    return ((days * 24 + hour) * 60 + minute) * 60 + second;
}

std::string utc_time_of(std::int64_t seconds) {
    using namespace std::chrono;
    constexpr std::int64_t day_length = std::int64_t{24} * 60 * 60;
    const year_month_day date(sys_days(days(seconds / day_length)));
    const int second = static_cast<int>(seconds % day_length);
    std::array<char, 32> text;
    const int length = std::snprintf(
        text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), second / 3600,
        second / 60 % 60, second % 60);
    return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace snapshot
