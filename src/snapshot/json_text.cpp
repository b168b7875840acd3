#include "snapshot/json_text.h"

#include <algorithm>
#include <utility>

#include <glaze/json.hpp>
#include <glib.h>

namespace snapshot {
namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view without_blanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// Returns the place of the first such character outside strings and inner values, or npos.
std::size_t find_outside(std::string_view text, char wanted) {
    std::size_t depth = 0;
    bool in_string = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        if (in_string) {
            at += character == '\\' ? 1 : 0;
            in_string = character != '"';
        } else if (depth == 0 && character == wanted) {
            return at;
        } else if (character == '"') {
            in_string = true;
        } else if (character == '{' || character == '[') {
            ++depth;
        } else if (character == '}' || character == ']') {
            depth -= depth > 0 ? 1 : 0;
        }
    }
    return std::string_view::npos;
}

}  // namespace

bool is_json(std::string_view text) {
    gchar* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string checked(valid);
    g_free(valid);
    // Unlike JSON, glaze requires both halves of a surrogate pair.
    for (std::size_t at = 0; (at = checked.find("\\u", at)) != std::string::npos; at += 2) {
        if (at + 2 < checked.size() && (checked[at + 2] == 'd' || checked[at + 2] == 'D')) {
            checked[at + 2] = '1';
        }
    }
    return !glz::validate_json(checked);
}

std::expected<std::vector<std::string>, std::string_view> member_names(std::string_view text) {
    const std::string_view object = without_blanks(text);
    if (object.size() < 2 || object.front() != '{' || object.back() != '}') {
        return std::unexpected(text);
    }
    std::string_view rest = without_blanks(object.substr(1, object.size() - 2));
    std::vector<std::string> names;
    for (bool goes_on = !rest.empty(); goes_on;) {
        const std::size_t end = std::min(find_outside(rest, ','), rest.size());
        const std::string_view member = rest.substr(0, end);
        const std::size_t colon = std::min(find_outside(member, ':'), member.size());
        std::string name;
        if (glz::read_json(name, without_blanks(member.substr(0, colon))) ||
            colon == member.size() || !is_json(member.substr(colon + 1))) {
            return std::unexpected(member);
        }
        names.push_back(std::move(name));
        goes_on = end < rest.size();
        rest.remove_prefix(goes_on ? end + 1 : end);
    }
    return names;
}

}  // namespace snapshot
