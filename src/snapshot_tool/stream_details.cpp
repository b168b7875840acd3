#include "snapshot_tool/stream_details.h"

#include <algorithm>
#include <cstddef>
#include <format>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "snapshot/printable.h"
#include "snapshot_tool/columns.h"
#include "snapshot_tool/figures.h"

namespace snapshot_tool {
namespace {

constexpr std::string_view indentation = "    ";
constexpr std::size_t most_key_columns = 32;  // a longer key has a line of its own

// Returns the name of the kind, and the value.
std::pair<std::string_view, std::string> described(const snapshot::value& value) {
    switch (value.kind()) {
        case snapshot::kind::boolean:
            return {"boolean", *value.get_if<bool>() ? "true" : "false"};
        case snapshot::kind::string:
            return {"string", whole_text(*value.get_if<std::string_view>())};
        case snapshot::kind::int64:
            return {"int64", std::to_string(*value.get_if<std::int64_t>())};
        case snapshot::kind::float64:
            return {"double", std::format("{}", *value.get_if<double>())};
        case snapshot::kind::pair32u: {
            const auto pair = *value.get_if<snapshot::pair32u>();
            return {"pair", std::format("[{}, {}]", pair.first, pair.second)};
        }
        case snapshot::kind::other:
            return {"other", snapshot::printable(value.get_if<snapshot::other>()->json)};
        case snapshot::kind::uint16:
            return {"uint16", std::to_string(*value.get_if<std::uint16_t>())};
        case snapshot::kind::uint32:
            return {"uint32", std::to_string(*value.get_if<std::uint32_t>())};
        case snapshot::kind::unwritable:
            return {"other", snapshot::printable(value.get_if<snapshot::unwritable>()->reason)};
    }
    return {"other", ""};
}

std::string padded(std::string_view text, std::size_t columns) {
    return std::string(text) + std::string(columns - std::min(columns, columns_of(text)), ' ');
}

void add_map(page& page, std::string_view title,
             const snapshot::answer<snapshot::map_entries>& answer, const snapshot::query& query) {
    page.end_line();
    const auto* map = std::get_if<snapshot::map_entries>(&answer);
    if (map == nullptr) {
        const auto* failure = std::get_if<snapshot::failure>(&answer);
        const reason reason(query, failure != nullptr ? failure->message : nullptr);
        page.add("! ", failure_text(title, reason.text()), true);
        return;
    }
    page.add("  ", title);
    if (map->empty()) {
        page.add(indentation, "no keys");
    }
    std::vector<std::string> keys;
    std::size_t columns = 0;
    for (const snapshot::entry& entry : *map) {
        keys.push_back(whole_text(entry.key));
        const std::size_t key_columns = columns_of(keys.back());
        columns = std::max(columns, key_columns <= most_key_columns ? key_columns : 0);
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        std::string key = keys[i];
        if (columns_of(key) > columns) {
            page.add(indentation, std::exchange(key, ""));
        }
        const auto [kind, text] = described((*map)[i].value);
        page.add(std::format("{}{}  {:7}  ", indentation, padded(key, columns), kind), text);
    }
}

std::string joined(const std::vector<std::string_view>& texts) {
    std::string text;
    for (const std::string_view one : texts) {
        text += (text.empty() ? "" : ", ") + whole_text(one);
    }
    return text.empty() ? "-" : text;
}

// Returns the input that the stream names, otherwise those of its channel.
std::string inputs_of(const device& device, const stream_info& info) {
    if (info.input) {
        return std::to_string(*info.input);
    }
    std::string text;
    if (info.channel && device.input_channels) {
        for (const input_channel& shown : *device.input_channels) {
            if (shown.id == *info.channel) {
                text += text.empty() ? "" : ", ";
                text += shown.input ? std::to_string(*shown.input) : "?";
            }
        }
    }
    return !text.empty() ? text : device.input_channels ? "-" : "?";
}

}  // namespace

void add_details(page& page, const device& device, const stream& stream) {
    const auto identity = stream.settings ? stream.settings->identity : std::nullopt;
    const figure channel = stream.info ? stream.info->channel : std::nullopt;
    page.add("", std::format("stream {} (id/0x{:04x})", stream.id, stream.id));
    page.add("  identity  ", identity ? whole_text(*identity) : stream.settings ? "-" : "?");
    page.add("  clients   ", stream.info ? joined(clients_of(stream)) : "?");
    page.add("  channel   ", channel ? std::to_string(*channel) : stream.info ? "-" : "?");
    page.add("  input     ", stream.info ? inputs_of(device, *stream.info) : "?");
    add_map(page, "info", stream.record->info, {"stream", stream.id, "info"});
    add_map(page, "settings", stream.record->settings, {"stream", stream.id, "settings"});
    add_map(page, "debug", stream.record->debug, {"stream", stream.id, "debug"});
}

}  // namespace snapshot_tool
