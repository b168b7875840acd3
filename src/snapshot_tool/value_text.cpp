#include "snapshot_tool/value_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <format>

#include <glib.h>

#include "snapshot/printable.h"

namespace snapshot_tool {
namespace {

std::string double_text(double number) {
    const std::string text = std::format("{}", number);
    // A whole number without these is an integer.
    const bool looks_whole = std::isfinite(number) && text.find_first_of(".e") == std::string::npos;
    return looks_whole ? text + ".0" : text;
}

std::size_t length_of(std::string_view text) {
    return static_cast<std::size_t>(g_utf8_strlen(text.data(), static_cast<gssize>(text.size())));
}

// Returns the rest of the text after this many characters.
std::string_view after(std::size_t characters, std::string_view text) {
    const char* rest = g_utf8_offset_to_pointer(text.data(), static_cast<glong>(characters));
    return text.substr(static_cast<std::size_t>(rest - text.data()));
}

// Returns the text without the characters before `begin`, cut to at most this many.
std::string cut_from(std::size_t begin, std::size_t characters, std::string_view text) {
    if (length_of(text) <= characters) {
        return std::string(text);
    }
    std::string cut;
    if (begin > 0) {
        text = after(begin, text);
        cut = "…";
        --characters;
    }
    if (length_of(text) <= characters) {
        return cut.append(text);
    }
    return cut.append(text.substr(0, text.size() - after(characters - 1, text).size())).append("…");
}

}  // namespace

std::string unambiguous(std::string_view text) {
    std::string doubled;
    for (const char c : text) {
        doubled.append(c == '\\' ? 2 : 1, c);
    }
    return snapshot::printable(doubled);
}

std::string value_text(const snapshot::value& value) {
    using snapshot::kind;
    switch (value.kind()) {
        case kind::boolean:
            return *value.get_if<bool>() ? "true" : "false";
        case kind::string: {
            const auto text = *value.get_if<std::string_view>();
            return '"' + unambiguous(text) + '"';
        }
        case kind::int64: {
            const auto number = *value.get_if<std::int64_t>();
            const bool looks_unsigned = number >= 0 && number <= UINT32_MAX;
            return std::to_string(number) + (looks_unsigned ? " (int64)" : "");
        }
        case kind::float64:
            return double_text(*value.get_if<double>());
        case kind::pair32u: {
            const auto [first, second] = *value.get_if<snapshot::pair32u>();
            return std::format("[{}, {}]", first, second);
        }
        case kind::other:
            return unambiguous(value.get_if<snapshot::other>()->json) + " (other)";
        case kind::uint16:
            return std::format("{} (uint16)", *value.get_if<std::uint16_t>());
        case kind::uint32:
            return std::to_string(*value.get_if<std::uint32_t>());
        case kind::unwritable:
            break;  // no file contains it
    }
    return "?";
}

std::pair<std::string, std::string> cut_where_they_differ(std::size_t characters,
                                                          std::string_view one,
                                                          std::string_view other) {
    std::size_t same = 0;
    const char* differs = one.data() + (std::ranges::mismatch(one, other).in1 - one.begin());
    for (const char* at = one.data(); at < differs && g_utf8_next_char(at) <= differs;
         at = g_utf8_next_char(at)) {
        ++same;
    }
    // A part of what is the same shows where the difference is.
    const std::size_t before = characters / 3;
    const std::size_t begin = same > before ? same - before : 0;
    return {cut_from(begin, characters, one), cut_from(begin, characters, other)};
}

}  // namespace snapshot_tool
