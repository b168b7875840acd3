#include "snapshot_tool/redaction.h"

#include <algorithm>

namespace {

// Whether a map holds a client's identity under the key: `identity` or `identity[N]`.
bool names_identity(std::string_view key) {
    constexpr std::string_view identity = "identity";
    if (!key.starts_with(identity)) {
        return false;
    }
    key.remove_prefix(identity.size());
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    return key.empty() || (key.size() > 2 && key.front() == '[' && key.back() == ']' &&
                           std::ranges::all_of(key.substr(1, key.size() - 2), is_digit));
}

}  // namespace

std::string redaction::key(const std::string& key) {
    constexpr std::string_view prefix = "identity.";  // the client's name follows
    return key.starts_with(prefix) ? std::string(prefix) + client(key.substr(prefix.size())) : key;
}

std::string redaction::text(std::string_view key, const std::string& text) {
    return names_identity(key) ? client(text) : text;
}

std::string redaction::json(std::string_view key, const std::string& json) {
    return names_identity(key) && json.contains('"') ? R"("redacted")" : json;
}

const std::string& redaction::client(const std::string& identity) {
    const auto [found, is_new] = clients_.try_emplace(identity);
    if (is_new) {
        found->second = "client-" + std::to_string(clients_.size());
    }
    return found->second;
}
