#include <charconv>
#include <cmath>
#include <string_view>
#include <type_traits>

#include <qwire.h>

#include "strict_client/calls.h"

namespace {

std::string quoted(std::string_view text) {
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
        [](const auto& held) -> std::string {
            using kind = std::remove_cvref_t<decltype(held)>;
            if constexpr (std::is_same_v<kind, bool>) {
                return held ? "true" : "false";
            } else if constexpr (std::is_same_v<kind, std::string>) {
                return quoted(held);
            } else if constexpr (std::is_same_v<kind, double>) {
                return shortest(held);
            } else if constexpr (std::is_same_v<kind, qw::raw_json>) {
                return held.text;
            } else if constexpr (std::is_integral_v<kind>) {
                return std::to_string(held);
            } else {
                return '[' + std::to_string(held.first) + ',' + std::to_string(held.second) + ']';
            }
        },
        value.content);
}

}  // namespace

namespace qw {

map::const_iterator map::find(const std::string& key) const {
    strict::log_native_read(*this, key);
    return std::map<std::string, tagged>::find(key);
}

std::optional<std::string> map::to_json(std::string& out) const {
    std::string text;
    for (const auto& [key, value] : *this) {
        const double* number = std::get_if<double>(&value.content);
        if (number != nullptr && !std::isfinite(*number)) {
            return "the value of '" + key + "' is not finite: JSON has no form for it";
        }
        text += (text.empty() ? "{" : ",") + quoted(key) + ':' + json_of(value);
    }
    out = text.empty() ? "{}" : text + '}';
    return std::nullopt;
}

}  // namespace qw
