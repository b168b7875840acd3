// A native map as a {} argument: its JSON object text. A map that cannot be written is thrown as a
// std::runtime_error with the bus library's message.
#pragma once

#include <format>
#include <stdexcept>
#include <string>
#include <string_view>

#include <qwire.h>

template <>
struct std::formatter<qw::map> : std::formatter<std::string_view> {
    auto format(const qw::map& map, auto& context) const {
        std::string text;
        if (const auto written = map.to_json(text); !written) {
            throw std::runtime_error(written.error());
        }
        return std::formatter<std::string_view>::format(text, context);
    }
};
