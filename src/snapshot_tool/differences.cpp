#include "snapshot_tool/differences.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <format>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "snapshot/comparison.h"
#include "snapshot/lookup.h"
#include "snapshot_tool/columns.h"
#include "snapshot_tool/figures.h"
#include "snapshot_tool/moving_keys.h"
#include "snapshot_tool/pairing.h"
#include "snapshot_tool/value_text.h"

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::channel_record;
using snapshot::map_entries;
using snapshot::query;
using snapshot::stream_record;
using snapshot::value;

constexpr std::size_t longest_text = 60;  // characters

// --- Answers ------------------------------------------------------------------------------------

std::string count_text(std::size_t count, std::string_view singular) {
    return std::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

// Texts of what an answer contains. Those of maps and objects do not say what is in them.
std::string text_of(map_entries map) {
    return count_text(map.size(), "key");
}

std::string text_of(const resolution& size) {
    return resolution_text(size);
}

std::string text_of(const rectangle& area) {
    return rectangle_text(area);
}

std::string text_of(std::span<const resolution> sizes) {
    std::string text;
    for (const resolution& size : sizes) {
        text += (text.empty() ? "" : " ") + resolution_text(size);
    }
    return text.empty() ? "none" : text;
}

template <class T>
std::string text_of(std::span<const snapshot::named_answer<T>> answers) {
    return count_text(answers.size(), "answer");
}

template <class Record>
    requires requires { Record::subject; }
std::string text_of(const Record&) {
    return "opens";
}

std::string fails_with(std::string_view message) {
    return message.empty() ? "fails" : "fails: " + unambiguous(message);
}

// What a query gives: the content of an answer or, if that is NULL, a failure.
template <class T>
struct outcome_of {
    const T* content;
    std::string message;
    bool is_not_recorded;  // left out, or with the message of an answer that is left out

    bool operator==(const outcome_of& other) const {
        return content == other.content &&
               (message == other.message || (is_not_recorded && other.is_not_recorded));
    }
    std::string text() const {
        return content != nullptr ? text_of(*content) : fails_with(message);
    }
};

template <class T>
outcome_of<T> outcome_for(const query& query, const answer<T>& answer) {
    if (const auto* content = std::get_if<T>(&answer)) {
        return {content, "", false};
    }
    const std::string not_recorded = snapshot::not_recorded(query);
    const auto* failure = std::get_if<snapshot::failure>(&answer);
    const std::string message = failure != nullptr ? failure->message : not_recorded;
    return {nullptr, message, message == not_recorded};
}

// Returns whether an input or output is left out, or recorded as the failure that this gives.
template <class Record>
bool is_left_out(const Record& record) {
    return record.fails &&
           record.fails->message == snapshot::not_recorded({Record::subject, record.id});
}

// --- Values that move ---------------------------------------------------------------------------

std::optional<double> number_in(const value* value) {
    if (value == nullptr) {
        return std::nullopt;
    }
    const auto whole = snapshot::widened<std::int64_t>(*value);
    const auto number = whole ? static_cast<double>(*whole) : value->get_if<double>();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

constexpr double minute = 60e6;  // microseconds

struct rate {
    double growth;  // of a counter
    double time;    // in which it grew, microseconds

    double in_a_minute() const { return growth / time * minute; }
};

// Returns the rate over the whole run, or nothing if the run time is missing.
std::optional<rate> rate_of(double count, std::optional<double> run_time) {
    if (!run_time || count < 0 || *run_time < 0 || (*run_time == 0 && count > 0)) {
        return std::nullopt;
    }
    return rate{count, *run_time > 0 ? *run_time : 1};
}

// Returns such as "0 -> 12.5 a minute" if the rate of failures rose, otherwise an empty text. The
// maps contain the run times.
std::string risen_rate(double older_count, double newer_count, map_entries older,
                       map_entries newer) {
    constexpr std::string_view run_time = "statistics.duration";
    const auto older_time = number_in(snapshot::find(older, run_time));
    const auto newer_time = number_in(snapshot::find(newer, run_time));
    const auto before = rate_of(older_count, older_time);
    auto after = rate_of(newer_count, newer_time);
    if (!before || !after) {
        return "";
    }
    if (*newer_time > *older_time && newer_count > older_count) {
        after = {newer_count - older_count, *newer_time - *older_time};
    }
    // More than a tenth above, and at least one a minute. Products of whole numbers are exact.
    const bool is_above = 10 * after->growth * before->time > 11 * before->growth * after->time &&
                          after->growth * minute >= after->time;
    return is_above ? std::format("{} -> {} a minute", frame_rate_text(before->in_a_minute()),
                                  frame_rate_text(after->in_a_minute()))
                    : "";
}

bool differs_by_more_than_a_tenth(double older, double newer) {
    return std::abs(newer - older) * 10 > std::abs(older);
}

bool halved_or_doubled(double older, double newer) {
    return newer != older && (newer * 2 <= older || newer >= older * 2);
}

const value* value_of(const snapshot::entry* entry) {
    return entry != nullptr ? &entry->value : nullptr;
}

std::string text_or_none(const value* value) {
    return value != nullptr ? value_text(*value) : "none";
}

// --- Streams ------------------------------------------------------------------------------------

const value* found_in(const answer<map_entries>& answer, std::string_view key) {
    const auto* map = std::get_if<map_entries>(&answer);
    return map != nullptr ? snapshot::find(*map, key) : nullptr;
}

std::string number_or_text(const value* value) {
    const auto number = value != nullptr ? snapshot::widened<std::int64_t>(*value) : std::nullopt;
    return number ? std::to_string(*number) : value != nullptr ? value_text(*value) : "";
}

// What a stream is for, by which it is found if its id does not say which it is.
struct purpose {
    const value* identity;
    const value* format;
    const value* channel;

    explicit purpose(const stream_record& stream)
        : identity(found_in(stream.settings, "identity")),
          format(found_in(stream.settings, "format")),
          channel(found_in(stream.settings, "channel")) {
        if (channel == nullptr) {
            channel = found_in(stream.info, "channel");
        }
    }

    // A text that only streams for the same purpose have in common.
    std::string key() const {
        return number_or_text(identity) + '\n' + number_or_text(format) + '\n' +
               number_or_text(channel);
    }
};

// Returns a hash of the answers, by which streams with the same answers are found.
std::size_t hash_of(const stream_record& stream) {
    std::string content;
    stream_record::each_answer([&](const char* name, auto member) {
        const auto outcome = outcome_for({stream_record::subject, stream.id, name}, stream.*member);
        if (outcome.content != nullptr) {
            for (const auto& [key, value] : *outcome.content) {
                content.append(key).append(1, '\n').append(value_text(value)).append(1, '\n');
            }
        } else if (!outcome.is_not_recorded) {
            content += outcome.message;
        }
        content += '\n';
    });
    return std::hash<std::string>()(content);
}

// --- The comparison -----------------------------------------------------------------------------

// Calls `visit(key, older, newer)` for each key of two lists that ascend by it. A list without the
// key gives NULL.
template <class Item, class Visit>
void for_each_key(std::span<const Item> older, std::span<const Item> newer,
                  std::string_view Item::* key, const Visit& visit) {
    while (!older.empty() || !newer.empty()) {
        const bool is_in_older =
            !older.empty() && (newer.empty() || older[0].*key <= newer[0].*key);
        const bool is_in_newer =
            !newer.empty() && (older.empty() || newer[0].*key <= older[0].*key);
        visit((is_in_older ? older[0] : newer[0]).*key, is_in_older ? &older[0] : nullptr,
              is_in_newer ? &newer[0] : nullptr);
        older = older.subspan(is_in_older ? 1 : 0);
        newer = newer.subspan(is_in_newer ? 1 : 0);
    }
}

template <class Record>
using list_answer = answer<std::vector<Record>>;

template <class T>
using named_answers = answer<std::span<const snapshot::named_answer<T>>>;

template <class Record>
std::optional<std::uint32_t> id_of(const Record& record) {
    if constexpr (requires { record.id; }) {
        return record.id;
    } else {
        return std::nullopt;
    }
}

// What the query for a list gives: objects, which are compared one by one, or a text instead.
struct list_state {
    bool has_objects;
    std::string text;
    bool fails = false;
};

template <class Record>
list_state state_of(const snapshot::answers& answers, list_answer<Record> snapshot::records::* list,
                    const char* query) {
    if (const auto* records = std::get_if<std::vector<Record>>(&(answers.*list))) {
        return {true, count_text(records->size(), Record::subject)};
    }
    if (std::holds_alternative<snapshot::left_out>(answers.*list)) {
        if constexpr (requires(Record record) { record.fails; }) {
            return {true, "none"};  // each query for one of them fails
        } else if constexpr (std::is_same_v<Record, channel_record>) {
            if (list == &snapshot::records::channels_filtered) {
                auto all = state_of(answers, &snapshot::records::channels, "channels");
                return {false, all.has_objects ? "by their properties" : std::move(all.text),
                        all.fails};
            }
        }
    }
    return {false, fails_with(outcome_for({query}, answers.*list).message), true};
}

class comparison {
  public:
    comparison(const snapshot::answers& older, const snapshot::answers& newer, bool is_complete,
               const line_receiver& receive)
        : older_(older), newer_(newer), is_complete_(is_complete), receive_(receive) {}

    bool run();

  private:
    void compare_streams(std::span<const stream_record> older,
                         std::span<const stream_record> newer);
    void compare_channels(list_answer<channel_record> snapshot::records::* list, const char* mark);
    template <class Record>
    void compare_opened(list_answer<Record> snapshot::records::* list);
    void compare_service();
    void compare_formats();

    bool is_equal(const stream_record& older, const stream_record& newer) const;

    // `part` says which answer of the object it is.
    template <class Record>
    void compare_record(const Record& older, const Record& newer);
    void compare_answer(std::string_view part, const query&, const query&, map_entries older,
                        map_entries newer) {
        compare_content(part, older, newer);
    }
    template <class T>
    void compare_answer(std::string_view part, const query& older_query, const query& newer_query,
                        const answer<T>& older, const answer<T>& newer) {
        compare_outcomes(part, outcome_for(older_query, older), outcome_for(newer_query, newer));
    }
    template <class T>
    void compare_answer(std::string_view part, const query& older_query, const query& newer_query,
                        const named_answers<T>& older, const named_answers<T>& newer);
    template <class T>
    void compare_outcomes(std::string_view part, const outcome_of<T>& older,
                          const outcome_of<T>& newer);

    void compare_content(std::string_view part, map_entries older, map_entries newer);
    template <class T>
    void compare_content(std::string_view part, const T& older, const T& newer);
    void compare_values(std::string_view part, std::string_view key, const value* older,
                        const value* newer, map_entries older_map, map_entries newer_map);

    // The lines after begin() are about this object.
    void begin(std::string name) { name_ = std::move(name); }
    void add_line(std::string_view line, bool is_alarming = false);
    void add_change(std::string_view what, std::string_view older, std::string_view newer,
                    bool is_alarming = false, std::string_view note = "");
    void add_only(const std::string& name, bool is_older, std::string_view description);
    std::string shortened(std::string text) const {
        return is_complete_ ? std::move(text) : cut_to(longest_text, text);
    }
    std::string key_text(std::string_view key) const;
    std::string name_of(const stream_record& stream, const value* identity) const;

    const snapshot::answers& older_;
    const snapshot::answers& newer_;
    bool is_complete_;
    const line_receiver& receive_;
    std::string name_;  // of the object; empty once it was received
    bool has_difference_ = false;
};

bool comparison::run() {
    const auto* older = std::get_if<std::vector<stream_record>>(&older_.streams);
    const auto* newer = std::get_if<std::vector<stream_record>>(&newer_.streams);
    if (older != nullptr && newer != nullptr) {
        compare_streams(*older, *newer);
    }
    compare_channels(&snapshot::records::channels, "");
    compare_channels(&snapshot::records::channels_filtered, " (of inputs)");
    compare_opened(&snapshot::records::inputs);
    compare_opened(&snapshot::records::outputs);
    compare_service();
    return has_difference_;
}

// --- Objects ------------------------------------------------------------------------------------

std::string comparison::name_of(const stream_record& stream, const value* identity) const {
    const std::string name = std::format("stream {}", stream.id);
    const auto text = identity != nullptr ? identity->get_if<std::string_view>() : std::nullopt;
    return text ? std::format("{} ({})", name, shortened(unambiguous(*text))) : name;
}

bool comparison::is_equal(const stream_record& older, const stream_record& newer) const {
    const line_receiver ignore = [](std::string_view, bool) {};
    comparison all(older_, newer_, true, ignore);
    all.compare_record(older, newer);
    return !all.has_difference_;
}

void comparison::compare_streams(std::span<const stream_record> older,
                                 std::span<const stream_record> newer) {
    const auto always = [](const auto&, const auto&) { return true; };
    pairing<stream_record> streams(older, newer);
    streams.pair_by(
        [](const stream_record& stream) {
            return stream.id != 0 ? std::optional(stream.id) : std::nullopt;
        },
        always);
    streams.pair_by([](const stream_record& stream) { return std::optional(hash_of(stream)); },
                    [&](const auto& one, const auto& other) { return is_equal(one, other); });
    streams.pair_by(
        [](const stream_record& stream) { return std::optional(purpose(stream).key()); }, always);

    for (const auto& [before, after] : streams.pairs()) {
        if (before == nullptr || after == nullptr) {
            const stream_record& stream = before != nullptr ? *before : *after;
            const purpose purpose(stream);
            std::string description;
            for (const auto& [name, value] :
                 {std::pair("format", purpose.format), std::pair("channel", purpose.channel)}) {
                if (value != nullptr) {
                    description += description.empty() ? "" : ", ";
                    description += std::format("{} {}", name, shortened(value_text(*value)));
                }
            }
            add_only(name_of(stream, purpose.identity), before != nullptr, description);
            continue;
        }
        const value* identity = purpose(*before).identity;
        begin(name_of(*before, identity != nullptr ? identity : purpose(*after).identity));
        if (before->id != after->id) {
            add_line(std::format("id {} -> {}", before->id, after->id));
        }
        compare_record(*before, *after);
    }
}

void comparison::compare_channels(list_answer<channel_record> snapshot::records::* list,
                                  const char* mark) {
    const auto* older = std::get_if<std::vector<channel_record>>(&(older_.*list));
    const auto* newer = std::get_if<std::vector<channel_record>>(&(newer_.*list));
    if (older == nullptr || newer == nullptr) {
        return;
    }
    pairing<channel_record> channels(*older, *newer);
    channels.pair_by([](const channel_record& channel) { return std::optional(channel.id); },
                     [](const auto&, const auto&) { return true; });
    for (const auto& [before, after] : channels.pairs()) {
        const std::string name =
            std::format("channel {}{}", (before != nullptr ? before : after)->id, mark);
        if (before == nullptr || after == nullptr) {
            add_only(name, before != nullptr, "");
            continue;
        }
        begin(name);
        compare_record(*before, *after);
    }
}

template <class Record>
void comparison::compare_opened(list_answer<Record> snapshot::records::* list) {
    const auto records_in = [&](const snapshot::answers& answers) {
        const auto* records = std::get_if<std::vector<Record>>(&(answers.*list));
        return records != nullptr ? std::span<const Record>(*records) : std::span<const Record>();
    };
    if (std::holds_alternative<snapshot::failure>(older_.*list) ||
        std::holds_alternative<snapshot::failure>(newer_.*list)) {
        return;
    }
    pairing<Record> records(records_in(older_), records_in(newer_));
    records.pair_by([](const Record& record) { return std::optional(record.id); },
                    [](const auto&, const auto&) { return true; });
    for (auto [before, after] : records.pairs()) {
        const std::string name =
            std::format("{} {}", Record::subject, (before != nullptr ? before : after)->id);
        before = before != nullptr && is_left_out(*before) ? nullptr : before;
        after = after != nullptr && is_left_out(*after) ? nullptr : after;
        const auto state = [](const Record& record) {
            return record.fails ? fails_with(record.fails->message) : "opens";
        };
        if (before == nullptr && after == nullptr) {
            continue;
        }
        if (before == nullptr || after == nullptr) {
            const Record& only = before != nullptr ? *before : *after;
            add_only(name, before != nullptr, only.fails ? state(only) : "");
            continue;
        }
        begin(name);
        if (before->fails || after->fails) {
            if (state(*before) != state(*after)) {
                add_change("", state(*before), state(*after), after->fails.has_value());
            }
            continue;
        }
        compare_record(*before, *after);
    }
}

void comparison::compare_service() {
    begin("service");
    snapshot::records::each_answer([&]<class T>(const snapshot::document_member& at,
                                                answer<T> snapshot::records::* member) {
        if constexpr (requires(T list) { list.push_back(*list.begin()); }) {
            const auto before = state_of(older_, member, at.query);
            const auto after = state_of(newer_, member, at.query);
            const bool is_left_out = std::holds_alternative<snapshot::left_out>(older_.*member) &&
                                     std::holds_alternative<snapshot::left_out>(newer_.*member);
            if (!is_left_out && (!before.has_objects || !after.has_objects) &&
                before.text != after.text) {
                add_change(at.query, before.text, after.text, after.fails);
            }
        } else {
            compare_answer(at.query, {at.query}, {at.query}, older_.*member, newer_.*member);
        }
    });
    compare_formats();
}

void comparison::compare_formats() {
    const auto entries_of = [](const snapshot::answers& answers) {
        std::vector<snapshot::entry> entries;
        const auto add = [&](const auto& formats) {
            for (const auto& [nick, code] : formats) {
                entries.push_back({nick, code});
            }
        };
        answers.formats ? add(*answers.formats) : add(snapshot::default_formats);
        std::ranges::sort(entries, {}, &snapshot::entry::key);
        return entries;
    };
    const auto older = entries_of(older_);
    const auto newer = entries_of(newer_);
    for_each_key(
        map_entries(older), map_entries(newer), &snapshot::entry::key,
        [&](std::string_view nick, const snapshot::entry* before, const snapshot::entry* after) {
            const std::string code_before = text_or_none(value_of(before));
            const std::string code_after = text_or_none(value_of(after));
            if (code_before != code_after) {
                add_change("formats  " + key_text(nick), code_before, code_after);
            }
        });
}

// --- Answers ------------------------------------------------------------------------------------

template <class Record>
void comparison::compare_record(const Record& older, const Record& newer) {
    const auto query_for = [](const Record& record, const char* name) {
        return query{Record::subject, id_of(record), name};
    };
    Record::each_answer([&](const char* name, auto member) {
        // The system and the mode have no lines of their own.
        const std::string part = id_of(older) ? name : std::format("{} {}", Record::subject, name);
        compare_answer(part, query_for(older, name), query_for(newer, name), older.*member,
                       newer.*member);
    });
}

template <class T>
void comparison::compare_answer(std::string_view part, const query& older_query,
                                const query& newer_query, const named_answers<T>& older,
                                const named_answers<T>& newer) {
    using named = snapshot::named_answer<T>;
    const auto names_in = [](const named_answers<T>& answers) {
        const auto* names = std::get_if<std::span<const named>>(&answers);
        return names != nullptr ? *names : std::span<const named>();
    };
    // Without the whole answer, the query for each name fails.
    const auto is_whole = [&](const named_answers<T>& one, const named_answers<T>& other) {
        return std::holds_alternative<std::span<const named>>(one) ||
               (std::holds_alternative<snapshot::left_out>(one) && !names_in(other).empty());
    };
    if (!is_whole(older, newer) || !is_whole(newer, older)) {
        compare_outcomes(part, outcome_for(older_query, older), outcome_for(newer_query, newer));
        return;
    }
    static const answer<T> missing;
    const auto outcome = [](const named* answer, query query, std::string_view name,
                            const named_answers<T>& whole) {
        if (!std::holds_alternative<snapshot::left_out>(whole)) {
            query.name = name.data();
        }
        return outcome_for(query, answer != nullptr ? answer->value : missing);
    };
    for_each_key(names_in(older), names_in(newer), &named::name,
                 [&](std::string_view name, const named* before, const named* after) {
                     compare_outcomes(std::format("{}  {}", part, key_text(name)),
                                      outcome(before, older_query, name, older),
                                      outcome(after, newer_query, name, newer));
                 });
}

template <class T>
void comparison::compare_outcomes(std::string_view part, const outcome_of<T>& older,
                                  const outcome_of<T>& newer) {
    if (older.content != nullptr && newer.content != nullptr) {
        compare_content(part, *older.content, *newer.content);
    } else if (older != newer) {
        add_change(part, older.text(), newer.text(), newer.content == nullptr);
    }
}

template <class T>
void comparison::compare_content(std::string_view part, const T& older, const T& newer) {
    if constexpr (requires { T::subject; }) {
        compare_record(older, newer);
    } else if (!snapshot::is_same(older, newer)) {
        add_change(part, text_of(older), text_of(newer));
    }
}

void comparison::compare_content(std::string_view part, map_entries older, map_entries newer) {
    for_each_key(
        older, newer, &snapshot::entry::key,
        [&](std::string_view key, const snapshot::entry* before, const snapshot::entry* after) {
            compare_values(part, key, value_of(before), value_of(after), older, newer);
        });
}

void comparison::compare_values(std::string_view part, std::string_view key, const value* older,
                                const value* newer, map_entries older_map, map_entries newer_map) {
    const bool is_changed =
        older == nullptr || newer == nullptr || !snapshot::is_same(*older, *newer);
    const auto before = number_in(older);
    const auto after = number_in(newer);
    const bool are_figures = before && after && older->kind() == newer->kind();
    bool counts = is_changed;
    std::string note;
    switch (movement_of(key)) {
        case movement::none:
            break;
        case movement::failures:
            // A counter that is not there has counted nothing.
            if (are_figures || (older == nullptr && after) || (newer == nullptr && before)) {
                note = risen_rate(before.value_or(0), after.value_or(0), older_map, newer_map);
                counts = !note.empty();
            }
            break;
        case movement::run_time:
            counts = before && after && *after < *before;
            note = counts ? "restarted" : "";
            break;
        case movement::amount:
            counts = are_figures ? differs_by_more_than_a_tenth(*before, *after) : is_changed;
            break;
        case movement::bit_rate:
            counts = are_figures ? halved_or_doubled(*before, *after) : is_changed;
            break;
        case movement::free:
            counts = false;
            break;
    }
    if (is_complete_ ? !is_changed && !counts : !counts) {
        return;
    }
    const std::string what = std::format("{}  {}", part, key_text(key));
    if (!is_complete_ && !note.empty()) {
        add_line(what + "  " + note, true);
        return;
    }
    add_change(what, text_or_none(older), text_or_none(newer), !note.empty(),
               note.empty() ? "" : " (" + note + ")");
}

// --- Lines --------------------------------------------------------------------------------------

std::string comparison::key_text(std::string_view key) const {
    return key.empty() ? R"("")" : shortened(unambiguous(key));
}

void comparison::add_line(std::string_view line, bool is_alarming) {
    has_difference_ = true;
    if (!name_.empty()) {
        receive_(std::exchange(name_, ""), false);
    }
    receive_(std::format("    {}", line), is_alarming);
}

void comparison::add_change(std::string_view what, std::string_view older, std::string_view newer,
                            bool is_alarming, std::string_view note) {
    const auto [before, after] = is_complete_ ? std::pair(std::string(older), std::string(newer))
                                              : cut_where_they_differ(longest_text, older, newer);
    add_line(std::format("{}{}{} -> {}{}", what, what.empty() ? "" : "  ", before, after, note),
             is_alarming);
}

void comparison::add_only(const std::string& name, bool is_older, std::string_view description) {
    has_difference_ = true;
    receive_(std::format("{}  only in {}{}{}", name, is_older ? "OLD" : "NEW",
                         description.empty() ? "" : ": ", shortened(std::string(description))),
             is_older);
}

}  // namespace

bool find_differences(const snapshot::answers& older, const snapshot::answers& newer,
                      bool is_complete, const line_receiver& receive) {
    return comparison(older, newer, is_complete, receive).run();
}

}  // namespace snapshot_tool
