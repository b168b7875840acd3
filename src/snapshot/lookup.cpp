#include "snapshot/lookup.h"

namespace snapshot {

std::string text_of(const query& query) {
    std::string text = query.subject;
    if (query.number) {
        text += ' ' + std::to_string(*query.number);
    }
    if (query.part != nullptr) {
        text.append(query.number ? ": " : " ").append(query.part);
    }
    if (query.name != nullptr) {
        text.append(" '").append(query.name).append("'");
    }
    return text;
}

std::string not_recorded(const query& query) {
    return text_of(query) + " not recorded";
}

bool is_answered(const answers& answers) {
    const auto is_value = []<class T>(const answer<T>& answer) {
        return std::holds_alternative<T>(answer);
    };
    const auto* outputs = std::get_if<std::vector<output_record>>(&answers.outputs);
    const output_record* output = outputs != nullptr ? find(*outputs, 0) : nullptr;
    return is_value(answers.system) || is_value(answers.mode) || is_value(answers.stream_debug) ||
           is_value(answers.stream_quota) || is_value(answers.stream_limit) ||
           is_value(answers.streams) || is_value(answers.channel_info) ||
           is_value(answers.channels) || is_value(answers.channels_filtered) ||
           (output != nullptr && !output->fails);
}

bool has_text(map_entries map, std::string_view key, std::string_view text) {
    const value* found = find(map, key);
    return found != nullptr && found->get_if<std::string_view>() == text;
}

}  // namespace snapshot
