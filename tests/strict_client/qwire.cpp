#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <type_traits>

#include <qwire.h>

#include "strict_client/calls.h"

namespace {

std::string json_quoted(std::string_view text) {
    constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr char digits[] = "0123456789abcdef";
    std::string out = "\"";
    for (const char c : text) {
        if (const std::size_t at = escaped.find(c); at != std::string_view::npos) {
            out += {'\\', letters[at]};
        } else if (static_cast<unsigned char>(c) < 0x20) {
            out += {'\\', 'u', '0', '0', digits[c / 16], digits[c % 16]};
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string shortest(double number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string json_of(const qw::tagged& value) {
    return std::visit(
        [](const auto& content) -> std::string {
            using kind = std::remove_cvref_t<decltype(content)>;
            if constexpr (std::is_same_v<kind, bool>) {
                return content ? "true" : "false";
            } else if constexpr (std::is_same_v<kind, std::string>) {
                return json_quoted(content);
            } else if constexpr (std::is_same_v<kind, double>) {
                return shortest(content);
            } else if constexpr (std::is_same_v<kind, qw::raw_json>) {
                return content.text;
            } else if constexpr (std::is_integral_v<kind>) {
                return std::to_string(content);
            } else {
                return '[' + std::to_string(content.first) + ',' + std::to_string(content.second) +
                       ']';
            }
        },
        value.content);
}

}  // namespace

namespace qw {

bool key_order::operator()(const std::string& one, const std::string& other) const {
    static const bool is_reversed = strict::is_planted("order of native keys");
    return is_reversed ? other < one : one < other;
}

map::const_iterator map::find(const std::string& key) const {
    strict::log_native_read(*this, key);
    return strict::is_planted("look-up in the native map") ? lower_bound(key) : by_key::find(key);
}

std::optional<std::string> map::to_json(std::string& out) const {
    std::string text;
    for (const auto& [key, value] : *this) {
        const double* number = std::get_if<double>(&value.content);
        if (number != nullptr && !std::isfinite(*number)) {
            return "the value of '" + key + "' is not finite: JSON has no form for it";
        }
        text += (text.empty() ? "{" : ",") + json_quoted(key) + ':' + json_of(value);
    }
    if (strict::is_planted("to_json")) {
        text += ',';
    } else if (strict::is_planted("to_json of two keys") && size() == 2) {
        text = '{' + json_quoted(rbegin()->first) + ':' + json_of(rbegin()->second) + ',' +
               json_quoted(begin()->first) + ':' + json_of(begin()->second);
    } else if (strict::is_planted("to_json of a pair") &&
               std::ranges::any_of(
                   *this, [](const auto& entry) { return entry.second.tag == tag_pair; })) {
        return "pairs are not supported";
    }
    out = text.empty() ? "{}" : text + '}';
    return std::nullopt;
}

}  // namespace qw
