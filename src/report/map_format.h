// What the bus library writes as JSON, as a {} argument: the text of one JSON object. Throws what
// to_json() throws.
#pragma once

#include <concepts>
#include <format>
#include <string_view>

#include "video/native.h"

template <class Native>
    requires std::same_as<Native, native_map> || std::same_as<Native, native_table>
struct std::formatter<Native> : std::formatter<std::string_view> {
    auto format(const Native& native, auto& context) const {
        return std::formatter<std::string_view>::format(native.to_json(), context);
    }
};
