#include "snapshot_tool/redaction.h"

#include <algorithm>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::entry;
using snapshot::map_entries;

constexpr std::string_view identity_prefix = "identity.";  // the client's name follows

// Returns whether the value under this key is a client's identity: `identity` or `identity[N]`.
bool is_identity(std::string_view key) {
    constexpr std::string_view identity = "identity";
    if (!key.starts_with(identity)) {
        return false;
    }
    key.remove_prefix(identity.size());
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    return key.empty() || (key.size() > 2 && key.front() == '[' && key.back() == ']' &&
                           std::ranges::all_of(key.substr(1, key.size() - 2), is_digit));
}

bool is_personal(const entry& entry) {
    return entry.key.starts_with(identity_prefix) || is_identity(entry.key);
}

// Clients are numbered in the order of the document.
class redaction {
  public:
    explicit redaction(snapshot::answers& all) : all_(all) {}

    void run();

  private:
    void replace(snapshot::failure& failure) { failure.message = "redacted"; }
    void replace(map_entries& map);
    void replace(snapshot::system_record& system) { replace(system.caps); }
    void replace(snapshot::mode_record& mode) { replace(mode.info); }
    void replace(snapshot::stream_record& stream);
    void replace(snapshot::channel_record& channel);
    void replace(snapshot::input_record& input);
    void replace(snapshot::output_record& output);
    void replace(snapshot::rectangle&) {}
    void replace(snapshot::resolution&) {}
    void replace(std::span<const snapshot::resolution>&) {}
    template <class T>
    void replace(std::span<const snapshot::named_answer<T>>& answers);
    template <class Record>
    void replace(std::vector<Record>& records);
    template <class T>
    void replace(answer<T>& answer);

    std::string_view client(std::string_view identity);
    entry redacted(const entry& original);

    snapshot::answers& all_;
    std::map<std::string_view, std::string_view> clients_;  // by identity
};

void redaction::run() {
    replace(all_.system);
    replace(all_.mode);
    replace(all_.stream_debug);
    replace(all_.stream_quota);
    replace(all_.stream_limit);
    replace(all_.streams);
    replace(all_.channel_info);
    replace(all_.channels);
    replace(all_.channels_filtered);
    replace(all_.inputs);
    replace(all_.outputs);
}

void redaction::replace(snapshot::stream_record& stream) {
    replace(stream.info);
    replace(stream.settings);
    replace(stream.debug);
}

void redaction::replace(snapshot::channel_record& channel) {
    replace(channel.properties);
    replace(channel.info);
    replace(channel.crop);
    replace(channel.crop_max);
    replace(channel.resolutions);
}

void redaction::replace(snapshot::input_record& input) {
    if (input.fails) {
        replace(*input.fails);
    }
    replace(input.info);
    replace(input.crop);
    replace(input.resolution_unrotated);
}

void redaction::replace(snapshot::output_record& output) {
    if (output.fails) {
        replace(*output.fails);
    }
    replace(output.info);
    replace(output.settings);
}

template <class T>
void redaction::replace(std::span<const snapshot::named_answer<T>>& answers) {
    std::vector<snapshot::named_answer<T>> replaced(answers.begin(), answers.end());
    for (auto& [name, answer] : replaced) {
        replace(answer);
    }
    answers = all_.arena.keep(replaced);
}

template <class Record>
void redaction::replace(std::vector<Record>& records) {
    for (Record& record : records) {
        replace(record);
    }
}

template <class T>
void redaction::replace(answer<T>& answer) {
    if (auto* failure = std::get_if<snapshot::failure>(&answer)) {
        replace(*failure);
    } else if (auto* value = std::get_if<T>(&answer)) {
        replace(*value);
    }
}

void redaction::replace(map_entries& map) {
    if (std::ranges::none_of(map, is_personal)) {
        return;
    }
    std::vector<entry> entries;
    entries.reserve(map.size());
    for (const entry& original : map) {
        entries.push_back(redacted(original));
    }
    std::ranges::stable_sort(entries, {}, &entry::key);
    map = all_.arena.keep(entries);
}

entry redaction::redacted(const entry& original) {
    const auto& [key, value] = original;
    if (key.starts_with(identity_prefix)) {
        const std::string_view name = client(key.substr(identity_prefix.size()));
        return {all_.arena.keep(std::string(identity_prefix).append(name)), value};
    }
    if (is_identity(key)) {
        if (const auto text = value.get_if<std::string_view>()) {
            return {key, client(*text)};
        }
        if (const auto other = value.get_if<snapshot::other>();
            other && other->json.contains('"')) {
            return {key, snapshot::other{R"("redacted")"}};
        }
    }
    return original;
}

std::string_view redaction::client(std::string_view identity) {
    const auto [found, is_new] = clients_.try_emplace(identity);
    if (is_new) {
        found->second = all_.arena.keep("client-" + std::to_string(clients_.size()));
    }
    return found->second;
}

}  // namespace

std::shared_ptr<snapshot::answers> redact(std::shared_ptr<const snapshot::answers> original) {
    auto redacted = std::make_shared<snapshot::answers>(std::move(original));
    redaction(*redacted).run();
    return redacted;
}

}  // namespace snapshot_tool
