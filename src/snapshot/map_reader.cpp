#include "snapshot/map_reader.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "snapshot/failures.h"

namespace snapshot {
namespace {

using namespace std::string_view_literals;

constexpr auto a_map = "a map (an object)"sv;

constexpr std::pair<std::string_view, double> not_finite[] = {
    {"nan", std::numeric_limits<double>::quiet_NaN()},
    {"-nan", -std::numeric_limits<double>::quiet_NaN()},
    {"inf", std::numeric_limits<double>::infinity()},
    {"-inf", -std::numeric_limits<double>::infinity()},
};

}  // namespace

answer<map_entries> map_reader::read() {
    entries_.clear();
    const auto failure = members_or_failure(in_, a_map, [&](const word& key) { read_entry(key); });
    if (failure) {
        return *failure;
    }
    return entries_.keep(arena_);
}

map_entries map_reader::read_properties() {
    entries_.clear();
    in_.object(a_map, [&](const word& key) { read_entry(key); });
    return entries_.keep(arena_);
}

void map_reader::read_entry(const word& key) {
    const value value = read_value();
    entries_.add({key.text, value}, key.at);
}

value map_reader::read_value() {
    switch (in_.peek()) {
        case 't':
        case 'f':
            return in_.boolean("true or false");
        case '"':
            return in_.string("a text").text;
        case '[': {
            const auto [first, second] = in_.naturals<2>("a pair (an array of two)");
            return pair32u(first, second);
        }
        case '{':
            return read_typed_value();
        default:
            return read_number();
    }
}

value map_reader::read_number() {
    const written_number written = in_.number("a map value");
    if (!written.whole) {
        return in_.double_value(written);
    }
    const std::int64_t value = in_.whole_value(written);
    if (value >= 0 && value <= UINT32_MAX) {
        return static_cast<std::uint32_t>(value);
    }
    return value;
}

value map_reader::read_typed_value() {
    struct form {
        std::string_view name;
        snapshot::value (*read)(map_reader& maps);
    };
    static constexpr form forms[] = {
        {"uint16",
         [](map_reader& maps) -> snapshot::value {
             return static_cast<std::uint16_t>(maps.in_.natural(UINT16_MAX));
         }},
        {"uint32", [](map_reader& maps) -> snapshot::value { return maps.in_.natural(); }},
        {"int64",
         [](map_reader& maps) -> snapshot::value {
             return maps.in_.whole_value(maps.in_.number("a whole number"));
         }},
        {"double", [](map_reader& maps) -> snapshot::value { return maps.read_double(); }},
        {"bytes", [](map_reader& maps) -> snapshot::value { return maps.read_bytes(); }},
        {"other", [](map_reader& maps) -> snapshot::value { return other{maps.in_.any_value()}; }},
    };
    const char* begin = in_.place();
    std::optional<snapshot::value> value;
    in_.object("'{'", [&](const word& kind) {
        if (value) {
            throw complaint{kind.at, "a typed value has one member"};
        }
        const auto* found = std::ranges::find(forms, kind.text, &form::name);
        if (found == std::end(forms)) {
            throw complaint{kind.at, "unknown kind of value " + quoted(kind.text)};
        }
        value = found->read(*this);
    });
    if (!value) {
        throw complaint{begin, "expected a typed value, found an empty object"};
    }
    return *value;
}

double map_reader::read_double() {
    constexpr auto what = R"(a number, "nan", "-nan", "inf" or "-inf")"sv;
    if (in_.peek() != '"') {
        return in_.double_value(in_.number(what));
    }
    const word written = in_.string(what);
    for (const auto& [name, value] : not_finite) {
        if (written.text == name) {
            return value;
        }
    }
    throw complaint{written.at, expected(what)};
}

// Reads a text of any bytes but NUL, written as lower-case hexadecimal digits.
std::string_view map_reader::read_bytes() {
    constexpr auto digits = "0123456789abcdef"sv;
    const word written = in_.string("hexadecimal digits");
    bytes_.clear();
    for (std::size_t i = 0; i < written.text.size(); i += 2) {
        const auto high = digits.find(written.text[i]);
        const auto low = digits.find(written.text.data()[i + 1]);  // or the NUL behind the text
        if (high == std::string_view::npos || low == std::string_view::npos) {
            throw complaint{written.at, "expected pairs of lower-case hexadecimal digits"};
        }
        if (high == 0 && low == 0) {
            throw complaint{written.at, "a text cannot contain a NUL"};
        }
        bytes_ += static_cast<char>(high << 4 | low);
    }
    return in_.keep(bytes_);
}

}  // namespace snapshot
