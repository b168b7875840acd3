// Times as a snapshot has them: 2026-11-22T07:14:32Z, in UTC, with whole seconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace snapshot {

// The last second of the year 9999, in seconds since 1970.
inline constexpr std::int64_t last_second = 253402300799;

// Returns the seconds since 1970, negative before, or nothing if the text does not have this form
// or no such time exists. The year 0 does not exist.
std::optional<std::int64_t> seconds_of(std::string_view utc_time);

// Returns the text of a time from 1970 to the year 9999.
std::string utc_time_of(std::int64_t seconds);

}  // namespace snapshot
