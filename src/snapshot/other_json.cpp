#include "snapshot/other_json.h"

#include <algorithm>
#include <format>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <glaze/json.hpp>
#include <glib.h>

#include "snapshot/printable.h"
#include "snapshot/snapshot_writer.h"

namespace {

// Returns what stands between the name and the last brace, or nothing when the text does not begin
// as an object whose first member has that name.
std::optional<std::string_view> value_in(std::string_view object, std::string_view quoted_name) {
    for (const std::string_view token :
         {std::string_view("{"), quoted_name, std::string_view(":")}) {
        object.remove_prefix(std::min(object.find_first_not_of(" \t\r\n"), object.size()));
        if (!object.starts_with(token)) {
            return std::nullopt;
        }
        object.remove_prefix(token.size());
    }
    const std::size_t end = object.rfind('}');
    return end != std::string_view::npos ? std::optional(object.substr(0, end)) : std::nullopt;
}

bool is_json(std::string_view text) {
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) {
        return false;
    }
    // glaze asks more of escapes than JSON does: the other half beside each half of a surrogate
    // pair.
    std::string checked(text);
    for (std::size_t at = 0; (at = checked.find("\\u", at)) != std::string::npos; at += 2) {
        if (at + 2 < checked.size() && (checked[at + 2] == 'd' || checked[at + 2] == 'D')) {
            checked[at + 2] = '1';
        }
    }
    return !glz::validate_json(checked);
}

}  // namespace

std::string other_json(const native_map& map, const std::string& key) {
    native_table table;
    table.insert("value", map, key);
    std::string object;
    try {
        object = table.to_json();
    } catch (const std::runtime_error& error) {
        throw not_recordable(
            std::format("the value of '{}' has no JSON form: {}", printable(key), error.what()));
    }
    const auto value = value_in(object, R"("value")");
    if (!value || !is_json(*value)) {
        throw not_recordable(std::format(
            "the JSON form of the value of '{}' is no JSON in UTF-8, or too deep", printable(key)));
    }
    std::string text(*value);
    return glz::minify_json(text);
}
