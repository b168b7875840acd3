// The native map behind a map: its order, its look-ups, its kinds and its JSON.
#include "video/native.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <format>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/content.h"
#include "snapshot/json_text.h"
#include "snapshot_tool/other_json.h"
#include "snapshot_tool/snapshot_writer.h"

namespace {

void native_ref(const probed_service& service, verdict& told) {
    for (const map_source& source : service.every_map) {
        if (const living<OruMap> map = source.ask(); map.get() != nullptr) {
            told.expect(oru_map_native_ref(map.get()) != nullptr, "{}: NULL", source.name);
        }
    }
}

void order_of_keys(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const std::vector<std::string> keys = native_map(map).keys();
        for (std::size_t i = 1; i < keys.size(); ++i) {
            told.expect(keys[i - 1] < keys[i], "{}: '{}' before '{}'", name, keys[i - 1], keys[i]);
        }
    });
}

// What is found under a key is what stands there, when it is 16-bit or 32-bit unsigned.
void look_up(const probed_service& service, verdict& told) {
    const auto in_words = [](std::uint32_t first, std::uint32_t second) {
        return first == 3 && second == 4 ? "the default"
               : first == second         ? std::to_string(first)
                                         : std::format("{}, and {}", first, second);
    };
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const auto find = [&](const std::string& key) {
            return in_words(native_map_get_uint(map, key.c_str(), 3),
                            native_map_get_uint(map, key.c_str(), 4));
        };
        for (const native_entry& entry : entries_of(map)) {
            if (entry.key.contains('\0')) {
                continue;
            }
            std::string wanted = "the default";
            if (const auto* narrow = std::get_if<std::uint16_t>(&entry.value)) {
                wanted = std::to_string(*narrow);
            } else if (const auto* wide = std::get_if<std::uint32_t>(&entry.value)) {
                wanted = std::to_string(*wide);
            }
            const std::string got = find(entry.key);
            told.expect(got == wanted, "{}: '{}': {} for {}", name, entry.key, got,
                        words_of(entry.value));
        }
        const std::string absent = absent_key(content_of(map));
        const std::string got = find(absent);
        told.expect(got == "the default", "{}: absent '{}': {}", name, absent, got);
    });
}

// --- Kinds --------------------------------------------------------------------------------------

// What a getter gives, unless that is the default.
std::optional<std::uint32_t> read_uint32(OruMap* map, const std::string& key) {
    const guint32 first = oru_map_get_uint32(map, key.c_str(), 3);
    const guint32 second = oru_map_get_uint32(map, key.c_str(), 4);
    return first == second ? std::optional<std::uint32_t>(first) : std::nullopt;
}

// The number as the bus writes it, unless that fails, which is the business of another check.
std::optional<std::string> json_of(const native_map& map, const std::string& key) {
    try {
        return other_json(map, key);
    } catch (const not_recordable&) {
        return std::nullopt;
    }
}

// A value is of one of the two kinds when it is read as one: by its kind, or by the getter in spite
// of it. Then its code is that of the kind, and its number is what the bus itself writes.
template <class Unsigned>
void check_code(const probed_service& service, verdict& told, unsigned code) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const native_map native(map);
        for (const native_entry& entry : native.entries()) {
            if (entry.key.contains('\0')) {
                continue;
            }
            const unsigned has = native.kind_code(entry.key);
            if (const auto* number = std::get_if<Unsigned>(&entry.value)) {
                told.expect(has == code, "{}: '{}': {} has the code {}", name, entry.key,
                            words_of(entry.value), has);
                if (const auto json = json_of(native, entry.key)) {
                    told.expect(*json == std::to_string(*number), "{}: '{}': {} is {} in JSON",
                                name, entry.key, words_of(entry.value), *json);
                }
            } else if (std::holds_alternative<native_other>(entry.value)) {
                const auto read = read_uint32(map, entry.key);
                if (read && *read <= std::numeric_limits<Unsigned>::max()) {
                    told.departs(
                        std::format("{}: '{}': oru_map_get_uint32 gives {}, of the code {}", name,
                                    entry.key, *read, has));
                }
            }
        }
    });
}

void code_of_16_bits(const probed_service& service, verdict& told) {
    check_code<std::uint16_t>(service, told, 7);
}

void code_of_32_bits(const probed_service& service, verdict& told) {
    check_code<std::uint32_t>(service, told, 8);
}

// --- JSON ---------------------------------------------------------------------------------------

bool has_json_form(const native_entry& entry) {
    const double* number = std::get_if<double>(&entry.value);
    return number == nullptr || std::isfinite(*number);
}

void to_json(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const native_map native(map);
        std::string text;
        try {
            text = native.to_json();
        } catch (const std::runtime_error& error) {
            // JSON has no form for a number that is not finite.
            if (std::ranges::all_of(native.entries(), has_json_form)) {
                told.departs(std::format("{}: fails: {}", name, error.what()));
            }
            return;
        }
        const auto names = member_names(text);
        if (!names) {
            told.departs(std::format("{}: no JSON at '{}' of '{}'", name,
                                     names.error().substr(0, 60), text.substr(0, 60)));
            return;
        }
        const std::vector<std::string> keys = native.keys();
        const auto [wanted, got] = std::ranges::mismatch(keys, *names);
        if (wanted == keys.end() && got == names->end()) {
            told.is_right();
        } else {
            told.departs(std::format("{}: member {} is {}, the key {}", name,
                                     wanted - keys.begin() + 1,
                                     got != names->end() ? '\'' + *got + '\'' : "none",
                                     wanted != keys.end() ? '\'' + *wanted + '\'' : "none"));
        }
    });
}

constexpr probe_check checks[] = {
    {"oru_map_native_ref", native_ref},        {"order of native keys", order_of_keys},
    {"look-up in the native map", look_up},    {"kind code of 16 bits", code_of_16_bits},
    {"kind code of 32 bits", code_of_32_bits}, {"to_json", to_json},
};

}  // namespace

std::span<const probe_check> native_checks() {
    return checks;
}
