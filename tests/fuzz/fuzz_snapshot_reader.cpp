// The snapshot reader, on any file content: it either rejects the file with its path, a position
// and a reason, or every answer of the snapshot follows the rules of the client interface.

#include <sys/mman.h>
#include <unistd.h>

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
#include "snapshot/load.h"
#include "snapshot/lookup.h"
#include "snapshot/printable.h"
#include "snapshot/writer.h"

namespace {

int snapshot_file() {
    static const int file = memfd_create("snapshot", 0);
    require(file >= 0, "a file in memory");
    return file;
}

std::string snapshot_path() {
    return "/proc/self/fd/" + std::to_string(snapshot_file());
}

snapshot::loaded load(std::string_view text) {
    const int file = snapshot_file();
    require(ftruncate(file, 0) == 0, "an empty file");
    require(pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
            "the text in the file");
    return snapshot::load(snapshot_path());
}

bool is_text(std::string_view text) {
    return text.find('\0') == text.npos && text.data()[text.size()] == '\0';
}

void check(const snapshot::failure& failure) {
    require(failure.message != nullptr, "a failure has a text");
}

void check(const snapshot::map_entries& entries) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        require(i == 0 || entries[i - 1].key < entries[i].key, "keys ascend");
        require(is_text(entries[i].key), "a key is a text");
        if (const auto text = entries[i].value.get_if<std::string_view>()) {
            require(is_text(*text), "a string is a text");
        }
        if (const auto other = entries[i].value.get_if<snapshot::other>()) {
            require(is_text(other->json) && parse_json(other->json, {.half_surrogates = true}),
                    "a value of another kind is JSON", other->json);
        }
    }
    for (const auto& entry : entries) {
        require(snapshot::find(entries, entry.key) == &entry.value, "a key is found", entry.key);
    }
}

void check(const auto&) {}

template <class T>
void check(const snapshot::named_answer<T>& named);
template <class T>
void check(const std::span<const snapshot::named_answer<T>>& list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        require(i == 0 || list[i - 1].name < list[i].name, "names ascend");
        require(is_text(list[i].name), "a name is a text");
        std::visit([](const auto& content) { check(content); }, list[i].value);
    }
}

void check_all(const auto&... answers) {
    (std::visit([](const auto& content) { check(content); }, answers), ...);
}

void check(const snapshot::answers& doc) {
    check_all(doc.stream_debug, doc.stream_quota, doc.stream_limit, doc.channel_info);
    if (const auto* system = std::get_if<snapshot::system_record>(&doc.system)) {
        check_all(system->caps);
    }
    if (const auto* mode = std::get_if<snapshot::mode_record>(&doc.mode)) {
        check_all(mode->info);
    }
    if (const auto* streams = std::get_if<std::vector<snapshot::stream_record>>(&doc.streams)) {
        for (const auto& stream : *streams) {
            check_all(stream.info, stream.settings, stream.debug);
        }
    }
    for (const auto* list : {&doc.channels, &doc.channels_filtered}) {
        if (const auto* channels = std::get_if<std::vector<snapshot::channel_record>>(list)) {
            for (const auto& channel : *channels) {
                check(channel.properties);
                check_all(channel.info, channel.crop, channel.crop_max, channel.resolutions);
            }
        }
    }
    if (const auto* inputs = std::get_if<std::vector<snapshot::input_record>>(&doc.inputs)) {
        require(std::ranges::is_sorted(*inputs, {}, &snapshot::input_record::id), "inputs ascend");
        for (const auto& input : *inputs) {
            check_all(input.info, input.crop, input.resolution_unrotated);
        }
    }
    if (const auto* outputs = std::get_if<std::vector<snapshot::output_record>>(&doc.outputs)) {
        require(std::ranges::is_sorted(*outputs, {}, &snapshot::output_record::id),
                "outputs ascend");
        for (const auto& output : *outputs) {
            check_all(output.info, output.settings);
        }
    }
}

// "PATH: REASON" or "PATH:LINE:COLUMN: REASON". The column may be one past the end of the line.
void check_complaint(std::string_view complaint, std::string_view input) {
    const std::string path = snapshot_path() + ":";
    require(complaint.starts_with(path), "a complaint begins with the path", complaint);
    require(snapshot::printable(complaint) == complaint, "a complaint is printable", complaint);
    std::string_view rest = complaint.substr(path.size());
    if (!rest.starts_with(' ')) {
        char* end = nullptr;
        const std::string position(rest);
        const unsigned long line = std::strtoul(position.c_str(), &end, 10);
        require(line > 0 && *end == ':', "a line", complaint);
        const unsigned long column = std::strtoul(end + 1, &end, 10);
        require(column > 0 && std::string_view(end).starts_with(": "), "a column", complaint);
        std::string_view from = input;
        for (unsigned long skipped = 1; skipped < line; ++skipped) {
            const std::size_t line_end = from.find('\n');
            require(line_end != from.npos, "the line is in the text", complaint);
            from.remove_prefix(line_end + 1);
        }
        require(column <= std::min(from.find('\n'), from.size()) + 1, "the column is in the line",
                complaint);
        rest = rest.substr(static_cast<std::size_t>(end - position.c_str()) + 1);
    }
    require(rest.size() > 1, "a complaint has a reason", complaint);
}

void check_written(const snapshot::answers& all) {
    const std::string text = snapshot::write(all);
    const snapshot::loaded again = load(text);
    require(again.has_value(), "the written text is a snapshot", text);
    require(snapshot::write(**again) == text, "reading and writing the text again changes nothing",
            text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const snapshot::loaded snapshot = load(input);
    if (!snapshot) {
        check_complaint(snapshot.error(), input);
        return 0;
    }
    require(parse_json(input, {.comments = true, .half_surrogates = true}).has_value(),
            "the reader accepts only JSON");
    check(**snapshot);
    check_written(**snapshot);
    return 0;
}
