// The feeder tool's document about the device, on any snapshot: parsed as JSON, it contains the
// values that the service returns.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include <oru.h>
#include <qwire.h>

#include "fuzz/json_text.h"
#include "fuzz/require.h"
#include "fuzz/snapshot_input.h"
#include "tlm/sections.h"
#include "video/owned.h"

namespace {

constexpr std::uint32_t most_inputs = 2000;  // opening 4 billion inputs takes too long

json_text string_of(std::string_view text) {
    return {.kind = json_kind::string, .text = std::string(text)};
}

json_text number_of(const auto& number) {
    return {.kind = json_kind::number, .text = std::to_string(number)};
}

// Returns a value as JSON. A double has no digits: same() compares them.
json_text json_of(const qw::value& value) {
    switch (value.kind()) {
        case qw::kind::boolean:
            return {.text = *value.get_if<bool>() ? "true" : "false"};
        case qw::kind::string:
            return string_of(*value.get_if<std::string_view>());
        case qw::kind::int64:
            return number_of(*value.get_if<std::int64_t>());
        case qw::kind::float64:
            return {.kind = json_kind::number};
        case qw::kind::pair32u: {
            const auto [first, second] = *value.get_if<qw::pair32u>();
            return {.kind = json_kind::array, .elements = {number_of(first), number_of(second)}};
        }
        case qw::kind::other:
            return parse_json(value.get_if<qw::other>()->json, {.half_surrogates = true})
                .value_or(json_text{});
        case qw::kind::uint16:
            return number_of(*value.get_if<std::uint16_t>());
        case qw::kind::uint32:
            return number_of(*value.get_if<std::uint32_t>());
        case qw::kind::unwritable:
            break;  // a file cannot contain one
    }
    return {};
}

bool same(const json_text& printed, const qw::value& value) {
    if (const auto number = value.get_if<double>()) {
        return printed.kind == json_kind::number &&
               std::strtod(printed.text.c_str(), nullptr) == *number;
    }
    return printed == json_of(value);
}

void expect_capture_modes(const json_text& printed, std::uint32_t inputs) {
    std::map<std::string, std::string> expected;
    for (std::uint32_t number = 1; number <= inputs; ++number) {
        const owned_object<OruInput> input{oru_input_new(number, nullptr)};
        guint32 width = 0;
        guint32 height = 0;
        if (input && oru_input_get_resolution_unrotated(input.get(), "capture", &width, &height,
                                                        nullptr) != FALSE) {
            expected["input" + std::to_string(number)] =
                std::to_string(width) + "x" + std::to_string(height);
        }
    }
    require(printed.names.size() == expected.size(), "the number of capture modes");
    auto printed_name = printed.names.begin();
    auto element = printed.elements.begin();
    for (const auto& [name, resolution] : expected) {
        require(*printed_name++ == name && *element++ == string_of(resolution), "the capture mode",
                name);
    }
}

void expect_view_mode(const json_text& printed, const qw::map& mode) {
    std::map<std::string, const qw::value*> expected;
    for (const auto& [key, value] : mode) {
        if (key == "view" || key.starts_with("capture") || key.starts_with("available")) {
            continue;
        }
        std::string name(key);
        for (char& c : name) {
            c = c == '.' ? '_' : c;
        }
        expected.emplace(name, &value);
    }
    require(printed.names.size() == expected.size(), "the number of view mode members");
    auto printed_name = printed.names.begin();
    auto element = printed.elements.begin();
    for (const auto& [name, value] : expected) {
        require(*printed_name++ == name && same(*element++, *value), "the view mode's member",
                name);
    }
}

void replace_once(std::string& text, std::string_view before, std::string_view after) {
    const std::size_t at = text.find(before);
    require(at != text.npos, "the member without a value", text);
    text.replace(at, before.size(), after);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    answer_from({reinterpret_cast<const char*>(data), size});
    const owned_object<OruMap> channels{oru_channel_get_info(nullptr, nullptr)};
    const std::uint32_t inputs =
        channels ? oru_map_get_uint32(channels.get(), "input.count", 1) : 0;
    if (inputs > most_inputs) {
        return 0;
    }
    const owned_object<OruMode> mode{oru_mode_new(nullptr)};
    const owned_object<OruMap> info{mode ? oru_mode_get_info(mode.get(), nullptr) : nullptr};

    const outcome result = run_section(print_system_info);
    require(!result.fatal, "the section is never fatal");
    if (result.exception) {
        require(result.out.empty(), "nothing is printed", result.out);
        require(result.exception->contains("not finite"), "the documented exception",
                *result.exception);
        return 0;
    }

    if (mode_breaks_off()) {
        require(result.out.starts_with("{\n    \"inputs\": "), "the start of a document",
                result.out);
        return 0;
    }

    // A table that cannot be queried leaves its member without a value. Otherwise the text is JSON.
    std::string text = result.out;
    require(text.ends_with("\n}\n"), "a document and a newline", text);
    if (!channels) {
        replace_once(text, "\n    \"capturemodes\": ,\n", "\n    \"capturemodes\": {},\n");
    }
    if (!info) {
        replace_once(text, "\n    \"viewmode\": \n", "\n    \"viewmode\": {}\n");
    }
    const auto document = parse_json(text, {.half_surrogates = true});
    require(document.has_value(), "the document is JSON", text);
    require(document->names == std::vector<std::string>{"inputs", "capturemodes", "viewmode"},
            "its three members", text);
    require(document->elements[0] == number_of(inputs), "the number of inputs", text);
    require(document->elements[1].kind == json_kind::object &&
                document->elements[2].kind == json_kind::object,
            "two tables", text);
    expect_capture_modes(document->elements[1], inputs);
    if (info) {
        expect_view_mode(document->elements[2], *oru_map_native_ref(info.get()));
    }
    return 0;
}
