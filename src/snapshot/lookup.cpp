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
    bool is_any_answered = false;
    records::each_answer([&]<class T>(const document_member&, answer<T> records::* member) {
        const auto* content = std::get_if<T>(&(answers.*member));
        if constexpr (requires { content->front().fails; }) {
            // There is no query for the list, only one for each object.
            is_any_answered |=
                content != nullptr &&
                std::ranges::any_of(*content, [](auto& object) { return !object.fails; });
        } else {
            is_any_answered |= content != nullptr;
        }
    });
    return is_any_answered;
}

bool has_text(map_entries map, std::string_view key, std::string_view text) {
    const value* found = find(map, key);
    return found != nullptr && found->get_if<std::string_view>() == text;
}

}  // namespace snapshot
