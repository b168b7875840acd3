#include "snapshot/lookup.h"

namespace snapshot {

std::string text_of(const query& asked) {
    std::string text = asked.subject;
    if (asked.number) {
        text += ' ' + std::to_string(*asked.number);
    }
    if (asked.part != nullptr) {
        text.append(asked.number ? ": " : " ").append(asked.part);
    }
    if (asked.name != nullptr) {
        text.append(" '").append(asked.name).append("'");
    }
    return text;
}

std::string not_recorded(const query& asked) {
    return text_of(asked) + " not recorded";
}

bool is_answered(const answers& all) {
    const auto is_value = []<class T>(const answer<T>& from) {
        return std::holds_alternative<T>(from);
    };
    const auto* outputs = std::get_if<std::vector<output_record>>(&all.outputs);
    const output_record* output = outputs != nullptr ? find(*outputs, 0) : nullptr;
    return is_value(all.system) || is_value(all.mode) || is_value(all.stream_debug) ||
           is_value(all.stream_quota) || is_value(all.stream_limit) || is_value(all.streams) ||
           is_value(all.channel_info) || is_value(all.channels) ||
           is_value(all.channels_filtered) || (output != nullptr && !output->fails);
}

bool has_text(map_entries map, std::string_view key, std::string_view text) {
    const value* found = find(map, key);
    return found != nullptr && found->get_if<std::string_view>() == text;
}

}  // namespace snapshot
