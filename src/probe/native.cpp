// Checks of the native map behind a map: the order of its keys, look-ups, kinds and JSON.
#include "video/native.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <format>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/map_contents.h"
#include "snapshot/json_text.h"

namespace probe {
namespace {

void check_native_ref(const video_service& service, verdict& result) {
    for (const map_source& source : service.maps_and_new_map) {
        if (const tracked<OruMap> map = source.query(); map.get() != nullptr) {
            result.expect(oru_map_native_ref(map.get()) != nullptr, "{}: NULL", source.name);
        }
    }
}

void check_order_of_keys(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const std::vector<std::string> keys = native_map(map).keys();
        for (std::size_t i = 1; i < keys.size(); ++i) {
            result.expect(keys[i - 1] < keys[i], "{}: '{}' before '{}'", name, keys[i - 1],
                          keys[i]);
        }
    });
}

// native_map_get_uint() finds 16-bit and 32-bit unsigned values, and no others.
void check_look_up(const video_service& service, verdict& result) {
    // Two defaults, because the value may be equal to one of them.
    const auto look_up = [](OruMap* map, const std::string& key) -> std::string {
        const std::uint32_t first = native_map_get_uint(map, key.c_str(), 3);
        const std::uint32_t second = native_map_get_uint(map, key.c_str(), 4);
        return first == 3 && second == 4 ? "the default"
               : first == second         ? std::to_string(first)
                                         : std::format("{}, and {}", first, second);
    };
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        for (const native_entry& entry : entries_of(map)) {
            if (!is_c_text(entry.key)) {
                continue;
            }
            std::string expected = "the default";
            if (const auto* narrow = std::get_if<std::uint16_t>(&entry.value)) {
                expected = std::to_string(*narrow);
            } else if (const auto* wide = std::get_if<std::uint32_t>(&entry.value)) {
                expected = std::to_string(*wide);
            }
            const std::string actual = look_up(map, entry.key);
            result.expect(actual == expected, "{}: '{}': {} for {}", name, entry.key, actual,
                          value_text(entry.value));
        }
        const std::string absent = absent_key(contents_of(map));
        const std::string actual = look_up(map, absent);
        result.expect(actual == "the default", "{}: absent '{}': {}", name, absent, actual);
    });
}

// --- Kinds --------------------------------------------------------------------------------------

// Returns the value that oru_map_get_uint32() reads, or nothing if it returns the default.
std::optional<std::uint32_t> read_uint32(OruMap* map, const std::string& key) {
    const guint32 first = oru_map_get_uint32(map, key.c_str(), 3);
    const guint32 second = oru_map_get_uint32(map, key.c_str(), 4);
    return first == second ? std::optional<std::uint32_t>(first) : std::nullopt;
}

// Returns the JSON text that the bus library writes for one value, or nothing if the text is not
// valid. check_to_json() reports that.
std::optional<std::string> json_of(const native_map& map, const std::string& key) {
    native_table table;
    table.insert("value", map, key);
    std::string object;
    try {
        object = table.to_json();
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
    const auto names = snapshot::member_names(object);
    if (!names || *names != std::vector<std::string>{"value"}) {
        return std::nullopt;
    }
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = object.find_first_not_of(blanks, object.find(':') + 1);
    const std::size_t end = object.find_last_not_of(blanks, object.rfind('}') - 1) + 1;
    return object.substr(begin, end - begin);
}

// A value of the kind Unsigned has this kind code, and its JSON text is the number. If the getter
// reads a value that native.cpp does not recognize, the library may use another code for the kind.
template <class Unsigned>
void check_kind_code(const video_service& service, verdict& result, unsigned expected_code) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const native_map native(map);
        for (const native_entry& entry : native.entries()) {
            if (!is_c_text(entry.key)) {
                continue;
            }
            const unsigned code = native.kind_code(entry.key);
            if (const auto* number = std::get_if<Unsigned>(&entry.value)) {
                result.expect(code == expected_code, "{}: '{}': {} has the code {}", name,
                              entry.key, value_text(entry.value), code);
                if (const auto json = json_of(native, entry.key)) {
                    result.expect(*json == std::to_string(*number), "{}: '{}': {} is {} in JSON",
                                  name, entry.key, value_text(entry.value), *json);
                }
            } else if (std::holds_alternative<native_other>(entry.value)) {
                const auto value = read_uint32(map, entry.key);
                if (value && *value <= std::numeric_limits<Unsigned>::max()) {
                    result.depart(
                        std::format("{}: '{}': oru_map_get_uint32 gives {}, of the code {}", name,
                                    entry.key, *value, code));
                }
            }
        }
    });
}

void check_code_of_16_bits(const video_service& service, verdict& result) {
    check_kind_code<std::uint16_t>(service, result, 7);
}

void check_code_of_32_bits(const video_service& service, verdict& result) {
    check_kind_code<std::uint32_t>(service, result, 8);
}

// --- JSON ---------------------------------------------------------------------------------------

bool has_json_form(const native_entry& entry) {
    const double* number = std::get_if<double>(&entry.value);
    return number == nullptr || std::isfinite(*number);
}

void check_to_json(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const native_map native(map);
        std::string json;
        try {
            json = native.to_json();
        } catch (const std::runtime_error& error) {
            if (std::ranges::all_of(native.entries(), has_json_form)) {
                result.depart(std::format("{}: fails: {}", name, error.what()));
            }
            return;
        }
        const auto names = snapshot::member_names(json);
        if (!names) {
            result.depart(std::format("{}: no JSON at '{}' of '{}'", name,
                                      names.error().substr(0, 60), json.substr(0, 60)));
            return;
        }
        const std::vector<std::string> keys = native.keys();
        const auto [key, member] = std::ranges::mismatch(keys, *names);
        if (key == keys.end() && member == names->end()) {
            result.pass();
        } else {
            result.depart(std::format("{}: member {} is {}, the key {}", name,
                                      key - keys.begin() + 1,
                                      member != names->end() ? '\'' + *member + '\'' : "none",
                                      key != keys.end() ? '\'' + *key + '\'' : "none"));
        }
    });
}

constexpr check native_table[] = {
    {"oru_map_native_ref", check_native_ref},
    {"order of native keys", check_order_of_keys},
    {"look-up in the native map", check_look_up},
    {"kind code of 16 bits", check_code_of_16_bits},
    {"kind code of 32 bits", check_code_of_32_bits},
    {"to_json", check_to_json},
};

}  // namespace

std::span<const check> native_checks() {
    return native_table;
}

}  // namespace probe
