// JSON for the reports, through glaze, with the two text forms that are the reports' own hooked
// in: numbers held as double (see number.h) and strings. Whoever writes JSON includes this header,
// so that every part of the program writes the same forms.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <glaze/core/write.hpp>

#include "report/number.h"

// The two forms come before glaze's JSON headers, which use the string form themselves.
namespace glz {

template <>
struct to<JSON, double> {
    template <auto Options>
    static void op(double value, is_context auto&& context, auto&& buffer, auto& position) {
        if (ensure_space(context, buffer, position + max_number_size + write_padding_bytes)) {
            char* start = &buffer[position];
            position += static_cast<std::size_t>(write_number(value, start) - start);
        }
    }
};

// glaze's own string writer puts two NULs in place of a control character that has no short escape;
// the reports copy such a byte as it is.
template <>
struct to<JSON, std::string_view> {
    template <auto Options>
    static void op(std::string_view string, is_context auto&& context, auto&& buffer,
                   auto& position) {
        if (!ensure_space(context, buffer,
                          position + 2 * string.size() + 2 + write_padding_bytes)) {
            return;
        }
        char* out = &buffer[position];
        *out++ = '"';
        for (const char character : string) {
            if (const char escape = short_escapes[static_cast<unsigned char>(character)];
                escape != 0) {
                *out++ = '\\';
                *out++ = escape;
            } else {
                *out++ = character;
            }
        }
        *out++ = '"';
        position = static_cast<std::size_t>(out - &buffer[0]);
    }

    // What follows the backslash, for each byte that is escaped.
    static constexpr auto short_escapes = [] {
        std::array<char, 256> table{};
        table['"'] = '"';
        table['\\'] = '\\';
        table['\b'] = 'b';
        table['\f'] = 'f';
        table['\n'] = 'n';
        table['\r'] = 'r';
        table['\t'] = 't';
        return table;
    }();
};

template <>
struct to<JSON, std::string> : to<JSON, std::string_view> {};

}  // namespace glz

#include <glaze/json.hpp>

// A JSON value; objects keep their members in ascending byte order of the keys.
using json = glz::generic_json<glz::num_mode::f64, glz::generic_sorted_map>;

// What the two documents of the feeder tool look like.
struct document_options : glz::opts {
    bool prettify = true;
    uint8_t indentation_width = 4;
    bool new_lines_in_arrays = false;
};

// Returns a view of the objects `parts` that is written as one object, their members in turn.
template <class... Parts>
glz::merge<const Parts&...> merged(const Parts&... parts) {
    return {glz::tie(parts...)};
}

// Each replaces `out` by the text of `value`: in compact form, or in that of the feeder tool's
// documents. Returns false if glaze reports an error; the text must not be printed then.
template <class Value>
bool write_compact(const Value& value, std::string& out) {
    return !glz::write_json(value, out);
}
template <class Value>
bool write_document(const Value& value, std::string& out) {
    return !glz::write<document_options{}>(value, out);
}
