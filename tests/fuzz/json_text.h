// A JSON reader for tests, independent of the code under test. It keeps numbers as they are
// written.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class json_kind { literal, number, string, array, object };

struct json_text {
    json_kind kind = json_kind::literal;
    std::string text = {};                 // of a literal or number as written, of a string decoded
    std::vector<std::string> names = {};   // of the members of an object
    std::vector<json_text> elements = {};  // of an array, or the values of an object's members

    bool operator==(const json_text&) const = default;
};

// What the reader accepts beyond JSON.
struct json_extensions {
    bool comments = false;         // between tokens, as blanks
    bool control_bytes = false;    // unescaped in strings
    bool half_surrogates = false;  // escaped in strings; decoded to bytes that are not valid UTF-8
};

// Returns how deep arrays and objects are nested in a JSON text.
std::size_t nesting(std::string_view json);

// Returns the value of `text`, which may have blanks around it, or nothing if it is not JSON.
std::optional<json_text> parse_json(std::string_view text, json_extensions extensions = {});
