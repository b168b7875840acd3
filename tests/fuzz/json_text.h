// A JSON reader of the tests' own, so that what the tools read and print is judged by other code
// than wrote it. It keeps every number as it is written.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct json_text {
    enum class kind { literal, number, string, array, object };

    kind is = kind::literal;
    std::string text = {};                 // a literal, a number as written, or a string decoded
    std::vector<std::string> names = {};   // of the members of an object
    std::vector<json_text> elements = {};  // of an array, or the values of an object's members

    bool operator==(const json_text&) const = default;
};

struct json_leave {
    bool comments = false;         // between tokens, as blanks
    bool control_bytes = false;    // in strings, as themselves
    bool half_surrogates = false;  // as escapes in strings; what they decode to is no UTF-8
};

// How deep the arrays and objects of a JSON text are nested.
std::size_t nesting(std::string_view json);

// Returns the one value that `text` holds, blanks around it, or nothing when it is not JSON.
std::optional<json_text> parse_json(std::string_view text, json_leave leave = {});
