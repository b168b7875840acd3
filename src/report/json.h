// JSON for the reports, written by glaze. Two text forms are the reports' own: numbers of type
// double (see number.h) and strings. Every file that writes JSON must include this header, so that
// all use these forms.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <glaze/core/write.hpp>

#include "report/number.h"

// The two forms must be defined before glaze's JSON headers, which use the one for strings.
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

// glaze's own writer replaces a control character without a short escape by two NULs. The reports
// contain such a byte unchanged.
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

    // The character after the backslash for each byte that is escaped, otherwise 0.
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

// A JSON value. The members of an object are in ascending byte order of their keys.
using json = glz::generic_json<glz::num_mode::f64, glz::generic_sorted_map>;

// The layout of the feeder tool's two documents.
struct document_options : glz::opts {
    bool prettify = true;
    uint8_t indentation_width = 4;
    bool new_lines_in_arrays = false;
};

// Returns a view of the objects `parts` that glaze writes as one object: the members of the first,
// then those of the second, and so on.
template <class... Parts>
glz::merge<const Parts&...> merged(const Parts&... parts) {
    return {glz::tie(parts...)};
}

// These replace `out` by the text of `value`, in compact form or with the layout of the feeder
// tool's documents. They return false if glaze reports an error; `out` must not be printed then.
template <class Value>
bool write_compact(const Value& value, std::string& out) {
    return !glz::write_json(value, out);
}
template <class Value>
bool write_document(const Value& value, std::string& out) {
    return !glz::write<document_options{}>(value, out);
}
