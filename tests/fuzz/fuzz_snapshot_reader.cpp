// The snapshot reader, whatever is in the file: it refuses with the file's path, a place in the
// text and a reason, or every answer that it holds keeps the rules of the client interface.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <variant>

#include "fuzz/json_text.h"
#include "fuzz/require.h"
#include "fuzz/snapshot_input.h"
#include "replay/snapshot.h"

namespace {

bool is_text(std::string_view text) {
    return text.find('\0') == text.npos && text.data()[text.size()] == '\0';
}

void check(const oru::failure& failure) {
    require(failure.message != nullptr, "a failure has a text");
}

void check(const oru::map_entries& entries) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        require(i == 0 || entries[i - 1].key < entries[i].key, "keys ascend");
        require(is_text(entries[i].key), "a key is a text");
        if (const auto text = entries[i].value.get_if<std::string_view>()) {
            require(is_text(*text), "a string is a text");
        }
        if (const auto other = entries[i].value.get_if<qw::other>()) {
            require(is_text(other->json) && parse_json(other->json, {.half_surrogates = true}),
                    "a value of another kind is JSON", other->json);
        }
    }
    const qw::map map(entries.data(), entries.size(), nullptr);
    for (const auto& entry : entries) {
        require(map.find(entry.key) == &entry.value, "a key is found", entry.key);
    }
    std::string text;
    if (const auto written = map.to_json(text); written) {
        const auto read = parse_json(text, {.half_surrogates = true});
        require(read && read->is == json_text::kind::object, "a map is a JSON object", text);
        require(std::ranges::equal(read->names, entries, {}, {}, &qw::map::entry::key),
                "a map's members are its keys", text);
    } else {
        require(written.error().contains("not finite"), "only what is not finite cannot be written",
                written.error());
    }
}

void check(const auto&) {}

template <class T>
void check(const oru::named<T>& named);
template <class T>
void check(const std::span<const oru::named<T>>& list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        require(i == 0 || list[i - 1].name < list[i].name, "names ascend");
        require(is_text(list[i].name), "a name is a text");
        std::visit([](const auto& is) { check(is); }, list[i].is);
    }
}

void check_all(const auto&... answers) {
    (std::visit([](const auto& is) { check(is); }, answers), ...);
}

void check(const oru::document& doc) {
    check_all(doc.stream_debug, doc.stream_quota, doc.stream_limit, doc.channel_info);
    if (const auto* system = std::get_if<oru::system_record>(&doc.system)) {
        check_all(system->caps);
    }
    if (const auto* mode = std::get_if<oru::mode_record>(&doc.mode)) {
        check_all(mode->info);
    }
    if (const auto* streams = std::get_if<std::vector<oru::stream_record>>(&doc.streams)) {
        for (const auto& stream : *streams) {
            check_all(stream.info, stream.settings, stream.debug);
        }
    }
    for (const auto* list : {&doc.channels, &doc.channels_filtered}) {
        if (const auto* channels = std::get_if<std::vector<oru::channel_record>>(list)) {
            for (const auto& channel : *channels) {
                check(channel.properties);
                check_all(channel.info, channel.crop, channel.crop_max, channel.resolutions);
            }
        }
    }
    if (const auto* inputs = std::get_if<std::vector<oru::input_record>>(&doc.inputs)) {
        require(std::ranges::is_sorted(*inputs, {}, &oru::input_record::id), "inputs ascend");
        for (const auto& input : *inputs) {
            check_all(input.info, input.crop, input.resolution_unrotated);
        }
    }
    if (const auto* outputs = std::get_if<std::vector<oru::output_record>>(&doc.outputs)) {
        require(std::ranges::is_sorted(*outputs, {}, &oru::output_record::id), "outputs ascend");
        for (const auto& output : *outputs) {
            check_all(output.info, output.settings);
        }
    }
}

// "PATH: REASON", or "PATH:LINE:COLUMN: REASON" with the place in the text or right behind it.
void check_complaint(std::string_view complaint, std::string_view input) {
    const std::string path = snapshot_path() + ":";
    require(complaint.starts_with(path), "a complaint begins with the path", complaint);
    require(std::ranges::none_of(complaint,
                                 [](char c) { return static_cast<unsigned char>(c) < 0x20; }),
            "a complaint is one line", complaint);
    std::string_view rest = complaint.substr(path.size());
    if (!rest.starts_with(' ')) {
        char* end = nullptr;
        const std::string place(rest);
        const unsigned long line = std::strtoul(place.c_str(), &end, 10);
        require(line > 0 && *end == ':', "a line", complaint);
        const unsigned long column = std::strtoul(end + 1, &end, 10);
        require(column > 0 && std::string_view(end).starts_with(": "), "a column", complaint);
        std::string_view from = input;
        for (unsigned long passed = 1; passed < line; ++passed) {
            const std::size_t line_end = from.find('\n');
            require(line_end != from.npos, "the line is in the text", complaint);
            from.remove_prefix(line_end + 1);
        }
        require(column <= std::min(from.find('\n'), from.size()) + 1, "the column is in the line",
                complaint);
        rest = rest.substr(static_cast<std::size_t>(end - place.c_str()) + 1);
    }
    require(rest.size() > 1, "a complaint has a reason", complaint);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    answer_from(input);
    const oru::snapshot snapshot = oru::load(snapshot_path());
    if (!snapshot) {
        check_complaint(snapshot.error(), input);
        return 0;
    }
    require(parse_json(input, {.comments = true, .half_surrogates = true}).has_value(),
            "only JSON is taken");
    check(**snapshot);
    return 0;
}
