#include "snapshot_tool/snapshot_writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <format>
#include <optional>
#include <variant>

#include <glib.h>

#include "snapshot/printable.h"

namespace {

constexpr std::size_t longest_snapshot = std::size_t{128} * 1024 * 1024;

bool is_utf8(std::string_view text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

// Returns what keeps the text out of a snapshot, or NULL.
const char* flaw_of(std::string_view text) {
    if (text.contains('\0')) {
        return "holds a NUL";
    }
    return is_utf8(text) ? nullptr : "is no UTF-8";
}

void append_hex(std::string& out, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += digits[static_cast<unsigned char>(byte) >> 4];
    out += digits[static_cast<unsigned char>(byte) & 15];
}

// Returns the JSON string of a text that is UTF-8.
std::string quoted(std::string_view text) {
    constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    const auto needs_escape = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
    };
    std::string form = "\"";
    while (true) {
        const auto special = std::ranges::find_if(text, needs_escape);
        form.append(text.begin(), special);
        if (special == text.end()) {
            break;
        }
        form += '\\';
        if (const auto which = escaped.find(*special); which != std::string_view::npos) {
            form += letters[which];
        } else {
            form += "u00";
            append_hex(form, *special);
        }
        text = {special + 1, text.end()};
    }
    form += '"';
    return form;
}

std::string hex_of(std::string_view bytes) {
    std::string hex;
    for (const char byte : bytes) {
        append_hex(hex, byte);
    }
    return hex;
}

template <class Number>
std::string digits_of(Number number) {
    std::array<char, 32> digits;
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

// A value whose form has to name its kind.
std::string typed(std::string_view kind, std::string_view form) {
    return std::format("{{ \"{}\": {} }}", kind, form);
}

// --- Values -------------------------------------------------------------------------------------

struct form_writer {
    using form = std::optional<std::string>;

    const std::string& key;

    form operator()(bool value) const { return value ? "true" : "false"; }

    form operator()(const std::string& value) const {
        if (value.contains('\0')) {
            throw not_recordable(std::format("the text of '{}' holds a NUL", printable(key)));
        }
        if (!is_utf8(value)) {
            return typed("bytes", quoted(hex_of(value)));
        }
        if (key == "$error") {
            throw not_recordable("the value of '$error' is a text, as if this were a failure");
        }
        return quoted(value);
    }

    form operator()(std::int64_t value) const {
        const bool plain_is_unsigned = value >= 0 && value <= UINT32_MAX;
        return plain_is_unsigned ? typed("int64", digits_of(value)) : digits_of(value);
    }

    form operator()(double value) const {
        if (std::isnan(value)) {
            return typed("double", std::signbit(value) ? R"("-nan")" : R"("nan")");
        }
        if (std::isinf(value)) {
            return typed("double", value < 0 ? R"("-inf")" : R"("inf")");
        }
        const std::string digits = digits_of(value);
        return digits.find_first_of(".e") == std::string::npos ? digits + ".0" : digits;
    }

    form operator()(native_pair value) const { return numbers_form({value.first, value.second}); }

    form operator()(std::uint16_t value) const { return typed("uint16", digits_of(value)); }

    form operator()(std::uint32_t value) const { return number_form(value); }

    form operator()(native_other) const { return std::nullopt; }
};

}  // namespace

std::string text_form(std::string_view text, std::string_view what) {
    if (const char* flaw = flaw_of(text)) {
        throw not_recordable(std::format("{} {}", what, flaw));
    }
    return quoted(text);
}

std::string failure_form(std::string_view message) {
    return typed("$error", message);
}

std::string number_form(std::uint32_t number) {
    return digits_of(number);
}

std::string numbers_form(std::initializer_list<std::uint32_t> numbers) {
    std::string form;
    for (const std::uint32_t number : numbers) {
        form += form.empty() ? "[" : ", ";
        form += digits_of(number);
    }
    return form + ']';
}

std::string resolutions_form(const std::vector<native_resolution>& resolutions) {
    std::string form = "[";
    for (const auto [width, height] : resolutions) {
        form += form.size() > 1 ? ", " : "";
        form += numbers_form({width, height});
    }
    return form + ']';
}

std::optional<std::string> value_form(const native_entry& entry) {
    return std::visit(form_writer{entry.key}, entry.value);
}

std::string other_form(std::string_view json) {
    return typed("other", json);
}

std::string map_form(const map_rows& rows) {
    if (rows.empty()) {
        return "{}";
    }
    std::string form;
    for (const auto& [key, value] : rows) {
        if (const char* flaw = flaw_of(key)) {
            throw not_recordable(std::format("the key '{}' {}", printable(key), flaw));
        }
        form += form.empty() ? "{\n    " : ",\n    ";
        form += quoted(key);
        form += ": ";
        form += value;
    }
    form += "\n}";
    return form;
}

// --- The document -------------------------------------------------------------------------------

void snapshot_writer::open_object(std::string_view name) {
    member(name, "");
    open('{');
}

void snapshot_writer::open_array(std::string_view name) {
    member(name, "");
    open('[');
}

void snapshot_writer::open_element() {
    begin_item();
    open('{');
}

void snapshot_writer::close() {
    const bool is_empty = text_.back() == '{' || text_.back() == '[';
    const char bracket = open_.back();
    open_.pop_back();
    if (!is_empty) {
        text_ += '\n';
        text_.append(4 * open_.size(), ' ');
    }
    text_ += bracket;
}

void snapshot_writer::member(std::string_view name, std::string_view form) {
    begin_item();
    text_ += quoted(name);
    text_ += ": ";
    while (true) {
        const std::size_t end = form.find('\n');
        text_ += form.substr(0, end);
        if (end == std::string_view::npos) {
            break;
        }
        text_ += '\n';
        text_.append(4 * open_.size(), ' ');
        form.remove_prefix(end + 1);
    }
}

std::string snapshot_writer::finish() {
    close();
    text_ += '\n';
    if (text_.size() > longest_snapshot) {
        throw not_recordable(
            std::format("the recording is {} bytes long, more than the {} of a snapshot",
                        text_.size(), longest_snapshot));
    }
    return std::move(text_);
}

// Begins the next member or element of what is open.
void snapshot_writer::begin_item() {
    if (text_.back() != '{' && text_.back() != '[') {
        text_ += ',';
    }
    text_ += '\n';
    text_.append(4 * open_.size(), ' ');
}

void snapshot_writer::open(char bracket) {
    text_ += bracket;
    open_ += bracket == '{' ? '}' : ']';
}
