#include "snapshot_tool/redaction.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <glib.h>

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

// Without a key, clients are numbered in the order of the document.
class redaction {
  public:
    redaction(snapshot::answers& all, const std::string* key) : all_(all), key_(key) {}

    void run();

  private:
    void replace(snapshot::failure& failure) { failure.message = "redacted"; }
    void replace(map_entries& map);
    template <class Record>
        requires requires { Record::subject; }
    void replace(Record& record);
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
    std::string new_name(std::string_view identity) const;
    entry redacted(const entry& original);

    snapshot::answers& all_;
    const std::string* key_;
    std::map<std::string_view, std::string_view> clients_;  // by identity
    std::set<std::string_view> names_;
};

void redaction::run() {
    snapshot::records::each_answer([&](const auto&, auto member) { replace(all_.*member); });
}

template <class Record>
    requires requires { Record::subject; }
void redaction::replace(Record& record) {
    if constexpr (requires { record.fails; }) {
        if (record.fails) {
            replace(*record.fails);
        }
    }
    Record::each_answer([&](const char*, auto member) { replace(record.*member); });
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
        found->second = all_.arena.keep(new_name(identity));
        if (!names_.insert(found->second).second) {
            throw std::runtime_error("with this key, two clients get the same name, " +
                                     std::string(found->second) + ": use another key");
        }
    }
    return found->second;
}

std::string redaction::new_name(std::string_view identity) const {
    if (key_ == nullptr) {
        return "client-" + std::to_string(clients_.size());
    }
    constexpr std::size_t digits = 12;
    gchar* digest = g_compute_hmac_for_data(
        G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(key_->data()), key_->size(),
        reinterpret_cast<const guchar*>(identity.data()), identity.size());
    std::string name = "client-" + std::string(digest, digits);
    g_free(digest);
    return name;
}

}  // namespace

void redact(snapshot::answers& all, const std::string* key) {
    redaction(all, key).run();
}

}  // namespace snapshot_tool
