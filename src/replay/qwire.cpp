#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <forward_list>
#include <span>
#include <vector>

#include <qwire.h>

#include "snapshot/lookup.h"

namespace qw {

// The content of one or several maps. Once a map was changed, its entries are in `own`; until then,
// they are in memory that `base` keeps alive.
struct map::content {
    std::span<const entry> entries;
    std::vector<entry> own;
    std::forward_list<std::string> texts;  // of the entries that were inserted or assigned
    std::shared_ptr<const void> base;      // owns everything else that the entries point to
};

namespace {

const map::entry* at_or_after(std::span<const map::entry> entries, std::string_view key) {
    return entries.data() +
           (std::ranges::lower_bound(entries, key, {}, &map::entry::key) - entries.begin());
}

std::span<const map::entry> with_prefix(std::span<const map::entry> entries,
                                        std::string_view prefix) {
    const map::entry* first = at_or_after(entries, prefix);
    const map::entry* last = std::partition_point(
        first, entries.data() + entries.size(),
        [&](const map::entry& entry) { return entry.key.starts_with(prefix); });
    return {first, last};
}

// Returns a view of a copy of `text` in `texts`, which a NUL follows.
std::string_view keep(std::forward_list<std::string>& texts, std::string_view text) {
    return texts.emplace_front(text);
}

value keep(std::forward_list<std::string>& texts, const value& original) {
    if (const auto text = original.get_if<std::string_view>()) {
        return keep(texts, *text);
    }
    if (const auto unknown = original.get_if<other>()) {
        return other{keep(texts, unknown->json)};
    }
    return original;
}

template <class Number>
void append_number(std::string& out, Number number) {
    std::array<char, 32> digits;
    out.append(digits.data(),
               std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void append_text(std::string& out, std::string_view text) {
    constexpr std::string_view hex = "0123456789abcdef";
    constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    out += '"';
    for (const char c : text) {
        if (const auto which = escaped.find(c); which != std::string_view::npos) {
            out += '\\';
            out += letters[which];
        } else if (static_cast<unsigned char>(c) < 0x20) {
            out += "\\u00";
            out += hex[static_cast<unsigned char>(c) >> 4];
            out += hex[static_cast<unsigned char>(c) & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

// Returns false and appends nothing if JSON has no form for the value.
bool append_value(std::string& out, const value& value) {
    switch (value.kind()) {
        case kind::boolean:
            out += *value.get_if<bool>() ? "true" : "false";
            break;
        case kind::string:
            append_text(out, *value.get_if<std::string_view>());
            break;
        case kind::int64:
            append_number(out, *value.get_if<std::int64_t>());
            break;
        case kind::float64:
            if (!std::isfinite(*value.get_if<double>())) {
                return false;
            }
            append_number(out, *value.get_if<double>());
            break;
        case kind::pair32u:
            out += '[';
            append_number(out, value.get_if<pair32u>()->first);
            out += ',';
            append_number(out, value.get_if<pair32u>()->second);
            out += ']';
            break;
        case kind::other:
            out += value.get_if<other>()->json;
            break;
        case kind::uint16:
            append_number(out, *value.get_if<std::uint16_t>());
            break;
        case kind::uint32:
            append_number(out, *value.get_if<std::uint32_t>());
            break;
        case kind::unwritable:
            return false;
    }
    return true;
}

}  // namespace

map::map(const entry* entries, std::size_t count, std::shared_ptr<const void> owner)
    : content_(std::make_shared<content>(content{
          .entries = {entries, count}, .own = {}, .texts = {}, .base = std::move(owner)})) {}

const map::entry* map::begin() const noexcept {
    return content_ != nullptr ? content_->entries.data() : nullptr;
}

const map::entry* map::end() const noexcept {
    return begin() + size();
}

std::size_t map::size() const noexcept {
    return content_ != nullptr ? content_->entries.size() : 0;
}

const value* map::find(std::string_view key) const noexcept {
    return snapshot::find({begin(), size()}, key);
}

map::content& map::own() {
    if (content_ == nullptr || content_.use_count() > 1 ||
        content_->entries.data() != content_->own.data()) {
        auto changed = std::make_shared<content>();
        changed->own.assign(begin(), end());
        changed->base = content_;
        content_ = std::move(changed);
    }
    return *content_;
}

bool map::insert(std::string_view key, const qw::value& value) {
    if (find(key) != nullptr) {
        return false;
    }
    content& changed = own();
    const entry* before = at_or_after(changed.own, key);
    changed.own.insert(changed.own.begin() + (before - changed.own.data()),
                       {keep(changed.texts, key), keep(changed.texts, value)});
    changed.entries = changed.own;
    return true;
}

void map::assign(std::string_view key, const qw::value& value) {
    if (insert(key, value)) {
        return;
    }
    content& changed = own();
    const entry* existing = at_or_after(changed.own, key);
    changed.own[static_cast<std::size_t>(existing - changed.own.data())].value =
        keep(changed.texts, value);
    changed.entries = changed.own;
}

void map::erase(std::string_view key) {
    if (find(key) == nullptr) {
        return;
    }
    content& changed = own();
    changed.own.erase(changed.own.begin() + (at_or_after(changed.own, key) - changed.own.data()));
    changed.entries = changed.own;
}

void map::erase_prefix(std::string_view prefix) {
    if (with_prefix({begin(), size()}, prefix).empty()) {
        return;
    }
    content& changed = own();
    const auto erased = with_prefix(changed.own, prefix);
    const auto first = changed.own.begin() + (erased.data() - changed.own.data());
    changed.own.erase(first, first + static_cast<std::ptrdiff_t>(erased.size()));
    changed.entries = changed.own;
}

map map::filter_prefix(std::string_view prefix) const {
    const auto kept = with_prefix({begin(), size()}, prefix);
    return kept.empty() ? map() : map(kept.data(), kept.size(), content_);
}

std::expected<void, std::string> map::to_json(std::string& out) const {
    std::string text = "{";
    for (const auto& [key, value] : *this) {
        if (text.size() > 1) {
            text += ',';
        }
        append_text(text, key);
        text += ':';
        if (!append_value(text, value)) {
            return std::unexpected("the value of '" + std::string(key) +
                                   "' is not finite: JSON has no form for it");
        }
    }
    text += '}';
    out = std::move(text);
    return {};
}

}  // namespace qw
