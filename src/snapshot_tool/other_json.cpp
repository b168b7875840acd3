#include "snapshot_tool/other_json.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <glaze/json.hpp>

#include "snapshot/json_text.h"
#include "snapshot/utf8.h"

namespace snapshot_tool {
namespace {

// Returns the text between the colon after the name and the last brace, or nothing if the text is
// not an object whose first member has this name.
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

}  // namespace

std::expected<std::string, std::string> other_json(const native_map& map, const std::string& key) {
    native_table table;
    table.insert("value", map, key);
    std::string object;
    try {
        object = table.to_json();
    } catch (const std::runtime_error& error) {
        return std::unexpected(std::string("has no JSON form: ") + error.what());
    }
    const auto value = value_in(object, R"("value")");
    if (!value || !snapshot::is_utf8(*value) || !snapshot::is_json(*value)) {
        return std::unexpected("");
    }
    std::string text(*value);
    return glz::minify_json(text);
}

}  // namespace snapshot_tool
