#include "snapshot_tool/recording.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <expected>
#include <format>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <oru.h>

#include "snapshot/printable.h"
#include "snapshot_tool/other_json.h"
#include "snapshot_tool/redaction.h"
#include "snapshot_tool/snapshot_writer.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// What a question is about, in the words of a message: "stream 3: info".
struct subject {
    const char* of;
    std::optional<std::uint32_t> number = std::nullopt;
    const char* part = nullptr;
};

std::string text_of(const subject& asked) {
    std::string text = asked.of;
    if (asked.number) {
        text += std::format(" {}", *asked.number);
    }
    if (asked.part != nullptr) {
        text += std::format(": {}", asked.part);
    }
    return text;
}

// A channel's answers in their forms.
struct channel_answers {
    std::uint32_t id = 0;
    std::string info, crop, crop_max, available;

    bool operator==(const channel_answers&) const = default;
};

// A list of channels, or the form of the failure in its place.
using channel_list = std::expected<std::vector<channel_answers>, std::string>;

using id_set = std::set<std::uint32_t>;

// Returns the ids of the channels in `found` when each stands in `all` with the same answers, and
// in the same order; nothing otherwise.
std::optional<id_set> ids_within(const channel_list& all, const channel_list& found) {
    if (!all || !found) {
        return std::nullopt;
    }
    id_set ids;
    for (auto rest = all->begin(); const channel_answers& channel : *found) {
        rest = std::find(rest, all->end(), channel);
        if (rest == all->end()) {
            return std::nullopt;
        }
        ids.insert(channel.id);
        ++rest;
    }
    return ids;
}

owned_object<OruMap> filter_by(const char* key, const char* value) {
    owned_object<OruMap> filter{oru_map_new()};
    if (filter == nullptr) {
        throw std::bad_alloc();
    }
    oru_map_set_string(filter.get(), key, value);
    return filter;
}

class recorder {
  public:
    explicit recorder(bool redact)
        : redaction_(redact ? std::optional(redaction()) : std::nullopt) {}

    std::string record(const char* about);

  private:
    void record_system();
    void record_mode();
    void record_streams();
    void record_stream(OruStream* stream, id_set& ids);
    void record_channels();
    void record_channel(const channel_answers& channel, bool is_input);
    void record_inputs();
    void record_input(std::uint32_t number, bool is_named);
    void record_output();
    void record_formats();

    // Each asks one question and returns the form of the answer, or of the failure in its place. A
    // map is also shown to `read`.
    template <class Ask>
    std::string map(const subject& asked, const Ask& ask,
                    void (recorder::*read)(OruMap*) = nullptr);
    template <class Ask>
    std::string rectangle(const subject& asked, const Ask& ask);
    template <class Ask>
    std::string size(const subject& asked, const Ask& ask);
    std::string resolutions(OruChannel* channel, const subject& asked);

    // Ask for a list of channels and everything about each.
    template <class Ask>
    channel_list channels(const char* name, const Ask& ask, void (recorder::*read)(OruMap*));
    channel_answers answers_of(OruChannel* channel, void (recorder::*read)(OruMap*));

    void read_input_count(OruMap* channel_info);
    void read_input_number(OruMap* channel_info);

    std::string form_of(const subject& asked, OruMap* map);
    std::string form_of(const subject& asked, const native_map& map, native_entry& entry);
    std::string failure(const subject& asked, const GError* error);
    std::string message(const subject& asked, const GError* error);
    template <class Make>
    std::string recordable(const subject& asked, const Make& make);
    void note(const std::string& what);
    void refuse(std::string why);

    std::optional<redaction> redaction_;
    snapshot_writer out_;
    std::uint32_t input_count_ = 0;
    id_set named_inputs_;  // by the channels of inputs

    std::set<std::string> notes_;

    bool answered_ = false;
    std::optional<std::string> first_failure_;
    std::optional<std::string> refusal_;  // the first thing that a snapshot cannot hold
};

std::string recorder::record(const char* about) {
    if (about != nullptr) {
        out_.member("about", recordable({"--about"}, [&] { return text_form(about, "the text"); }));
    }
    record_system();
    record_mode();
    record_streams();
    record_channels();
    record_inputs();
    record_output();
    record_formats();
    if (!answered_) {
        throw std::runtime_error(first_failure_.value_or(""));
    }
    if (refusal_) {
        throw not_recordable(*refusal_);
    }
    return out_.finish();
}

// --- The questions ------------------------------------------------------------------------------

void recorder::record_system() {
    owned_error error;
    const owned_object<OruSystem> system{oru_system_new(std::out_ptr(error))};
    if (system == nullptr) {
        out_.member("system", failure({"system"}, error.get()));
        return;
    }
    answered_ = true;
    out_.open_object("system");
    out_.member("caps", map({"system caps"}, [&](GError** failed) {
                    return oru_system_get_caps(system.get(), failed);
                }));
    out_.close();
}

void recorder::record_mode() {
    owned_error error;
    const owned_object<OruMode> mode{oru_mode_new(std::out_ptr(error))};
    if (mode == nullptr) {
        out_.member("mode", failure({"mode"}, error.get()));
        return;
    }
    answered_ = true;
    out_.open_object("mode");
    out_.member("info", map({"mode info"}, [&](GError** failed) {
                    return oru_mode_get_info(mode.get(), failed);
                }));
    out_.close();
}

void recorder::record_streams() {
    out_.open_object("stream");
    out_.member("debug", map({"stream debug"}, [](GError** failed) {
                    return oru_stream_get_debug(nullptr, failed);
                }));
    out_.member("quota", map({"stream quota"}, oru_stream_get_quota));
    out_.member("limit", map({"stream limit"}, oru_stream_get_limit));

    owned_error error;
    const owned_object_list streams{oru_stream_get_all(std::out_ptr(error))};
    if (error != nullptr) {
        out_.member("all", failure({"streams"}, error.get()));
    } else {
        answered_ = true;
        id_set ids;
        out_.open_array("all");
        for (const GList* link = streams.get(); link != nullptr; link = link->next) {
            record_stream(object_in<OruStream>(link), ids);
        }
        out_.close();
    }
    out_.close();
}

void recorder::record_stream(OruStream* stream, id_set& ids) {
    const std::uint32_t id = oru_stream_get_id(stream);
    if (id != 0 && !ids.insert(id).second) {
        refuse(std::format("stream {} is listed twice", id));
    }
    const auto ask = [&](const char* part, OruMap* (*query)(OruStream*, GError**)) {
        out_.member(part, map({"stream", id, part},
                              [&](GError** failed) { return query(stream, failed); }));
    };
    out_.open_element();
    out_.member("id", number_form(id));
    ask("info", oru_stream_get_info);
    ask("settings", oru_stream_get_settings);
    ask("debug", oru_stream_get_debug);
    out_.close();
}

void recorder::record_channels() {
    out_.open_object("channel");
    out_.member("info", map(
                            {"channel info"},
                            [](GError** failed) { return oru_channel_get_info(nullptr, failed); },
                            &recorder::read_input_count));
    const channel_list all = channels("channels", oru_channel_get_all, nullptr);
    const owned_object<OruMap> filter = filter_by("key", "input");
    const channel_list found = channels(
        "channels of inputs",
        [&](GError** failed) { return oru_channel_get_filtered(filter.get(), failed); },
        &recorder::read_input_number);

    const auto record_list = [&](const char* name, const channel_list& list, const id_set& inputs) {
        if (!list) {
            out_.member(name, list.error());
            return;
        }
        out_.open_array(name);
        for (const channel_answers& channel : *list) {
            record_channel(channel, inputs.contains(channel.id));
        }
        out_.close();
    };
    const std::optional<id_set> inputs = ids_within(all, found);
    record_list("all", all, inputs.value_or(id_set()));
    if (!inputs) {
        record_list("filtered", found, {});
    }
    out_.close();
}

void recorder::record_channel(const channel_answers& channel, bool is_input) {
    out_.open_element();
    out_.member("id", number_form(channel.id));
    if (is_input) {
        out_.member("properties", map_form({{"key", text_form("input", "")}}));
    }
    out_.member("info", channel.info);
    out_.member("crop", channel.crop);
    out_.member("crop_max", channel.crop_max);
    out_.open_object("resolutions");
    out_.member("available", channel.available);
    out_.close();
    out_.close();
}

template <class Ask>
channel_list recorder::channels(const char* name, const Ask& ask, void (recorder::*read)(OruMap*)) {
    owned_error error;
    const owned_object_list list{ask(std::out_ptr(error))};
    if (error != nullptr) {
        return std::unexpected(failure({name}, error.get()));
    }
    answered_ = true;
    id_set ids;
    std::vector<channel_answers> all;
    for (const GList* link = list.get(); link != nullptr; link = link->next) {
        all.push_back(answers_of(object_in<OruChannel>(link), read));
        if (!ids.insert(all.back().id).second) {
            refuse(std::format("channel {} is listed twice", all.back().id));
        }
    }
    return all;
}

channel_answers recorder::answers_of(OruChannel* channel, void (recorder::*read)(OruMap*)) {
    const std::uint32_t id = oru_channel_get_id(channel);
    channel_answers answers;
    answers.id = id;
    answers.info = map(
        {"channel", id, "info"},
        [&](GError** failed) { return oru_channel_get_info(channel, failed); }, read);
    answers.crop = rectangle({"channel", id, "crop"}, [&](const auto&... out) {
        return oru_channel_get_crop(channel, out...);
    });
    answers.crop_max = size({"channel", id, "crop_max"}, [&](const auto&... out) {
        return oru_channel_get_crop_max(channel, out...);
    });
    answers.available = resolutions(channel, {"channel", id, "resolutions"});
    return answers;
}

// The inputs that the tools ask for: those that are counted, and those that the channels of inputs
// name. What is only counted need not be there.
void recorder::record_inputs() {
    out_.open_object("input");
    out_.open_array("all");
    if (named_inputs_.contains(0)) {
        record_input(0, true);
    }
    // 64 bits, so that the walk ends for the largest count as well.
    for (std::uint64_t number = 1; number <= input_count_; ++number) {
        const auto counted = static_cast<std::uint32_t>(number);
        record_input(counted, named_inputs_.contains(counted));
    }
    for (auto beyond = named_inputs_.upper_bound(input_count_); beyond != named_inputs_.end();
         ++beyond) {
        record_input(*beyond, true);
    }
    out_.close();
    out_.close();
}

void recorder::record_input(std::uint32_t number, bool is_named) {
    owned_error error;
    const owned_object<OruInput> input{is_named ? oru_input_new(number, std::out_ptr(error))
                                                : oru_input_new(number, nullptr)};
    if (input == nullptr && !is_named) {
        return;
    }
    out_.open_element();
    out_.member("id", number_form(number));
    if (input != nullptr) {
        answered_ = true;
        out_.member("info", map({"input", number, "info"}, [&](GError** failed) {
                        return oru_input_get_info(input.get(), failed);
                    }));
        out_.member("crop", rectangle({"input", number, "crop"}, [&](const auto&... out) {
                        return oru_input_get_crop(input.get(), out...);
                    }));
        out_.open_object("resolution_unrotated");
        out_.member("capture",
                    size({"input", number, "resolution_unrotated"}, [&](const auto&... out) {
                        return oru_input_get_resolution_unrotated(input.get(), "capture", out...);
                    }));
        out_.close();
    } else {
        out_.member("$error", message({"input", number}, error.get()));
    }
    out_.close();
}

void recorder::record_output() {
    out_.open_object("output");
    out_.open_array("all");
    out_.open_element();
    out_.member("id", number_form(0));
    owned_error error;
    const owned_object<OruOutput> output{oru_output_new(0, std::out_ptr(error))};
    if (output != nullptr) {
        answered_ = true;
        out_.member("info", map({"output", 0, "info"}, [&](GError** failed) {
                        return oru_output_get_info(output.get(), failed);
                    }));
        out_.member("settings", map({"output", 0, "settings"}, [&](GError** failed) {
                        return oru_output_get_settings(output.get(), failed);
                    }));
    } else {
        out_.member("$error", message({"output", 0}, error.get()));
    }
    out_.close();
    out_.close();
    out_.close();
}

// The service's enumeration: of several names of one code the one that is found.
void recorder::record_formats() {
    const owned_class<GEnumClass> formats{
        static_cast<GEnumClass*>(g_type_class_ref(oru_format_get_type()))};
    std::map<std::uint32_t, std::string> nicks;
    for (guint i = 0; i < formats->n_values; ++i) {
        const gint value = formats->values[i].value;
        nicks.try_emplace(static_cast<std::uint32_t>(value),
                          g_enum_get_value(formats.get(), value)->value_nick);
    }
    std::map<std::string, std::uint32_t> codes;
    map_rows rows;
    for (const auto& [code, nick] : nicks) {
        if (const auto [same, is_new] = codes.try_emplace(nick, code); !is_new) {
            refuse(std::format("formats {} and {} have one name, '{}'", same->second, code,
                               printable(nick)));
        }
        rows.emplace_back(nick, number_form(code));
    }
    out_.member("formats", recordable({"formats"}, [&] { return map_form(rows); }));
}

// --- Answers ------------------------------------------------------------------------------------

template <class Ask>
std::string recorder::map(const subject& asked, const Ask& ask, void (recorder::*read)(OruMap*)) {
    owned_error error;
    const owned_object<OruMap> map{ask(std::out_ptr(error))};
    if (map == nullptr) {
        return failure(asked, error.get());
    }
    answered_ = true;
    if (read != nullptr) {
        (this->*read)(map.get());
    }
    return form_of(asked, map.get());
}

template <class Ask>
std::string recorder::rectangle(const subject& asked, const Ask& ask) {
    owned_error error;
    guint32 x = 0;
    guint32 y = 0;
    guint32 width = 0;
    guint32 height = 0;
    if (ask(&x, &y, &width, &height, std::out_ptr(error)) == FALSE) {
        return failure(asked, error.get());
    }
    answered_ = true;
    return numbers_form({x, y, width, height});
}

template <class Ask>
std::string recorder::size(const subject& asked, const Ask& ask) {
    owned_error error;
    guint32 width = 0;
    guint32 height = 0;
    if (ask(&width, &height, std::out_ptr(error)) == FALSE) {
        return failure(asked, error.get());
    }
    answered_ = true;
    return numbers_form({width, height});
}

std::string recorder::resolutions(OruChannel* channel, const subject& asked) {
    const owned_object<OruMap> filter = filter_by("select", "available");
    owned_error error;
    const owned_block set{oru_channel_get_resolutions(channel, filter.get(), std::out_ptr(error))};
    if (set == nullptr) {
        return failure(asked, error.get());
    }
    answered_ = true;
    return resolutions_form(native_resolutions(set.get()));
}

void recorder::read_input_count(OruMap* channel_info) {
    input_count_ = oru_map_get_uint32(channel_info, "input.count", 1);
}

void recorder::read_input_number(OruMap* channel_info) {
    named_inputs_.insert(oru_map_get_uint32(channel_info, "type.id", 1));
}

// --- Forms --------------------------------------------------------------------------------------

std::string recorder::form_of(const subject& asked, OruMap* map) {
    return recordable(asked, [&] {
        const native_map native{map};
        map_rows rows;
        for (native_entry& entry : native.entries()) {
            std::string form = form_of(asked, native, entry);
            rows.emplace_back(redaction_ ? redaction_->key(entry.key) : entry.key, std::move(form));
        }
        if (redaction_) {
            std::ranges::sort(rows);
        }
        return map_form(rows);
    });
}

std::string recorder::form_of(const subject& asked, const native_map& map, native_entry& entry) {
    if (std::string* text = std::get_if<std::string>(&entry.value); redaction_ && text != nullptr) {
        *text = redaction_->text(entry.key, *text);
    }
    if (const auto form = value_form(entry)) {
        return *form;
    }
    const std::string json = other_json(map, entry.key);
    note(std::format("{}: '{}' is of a kind without a form, recorded as JSON", text_of(asked),
                     printable(redaction_ ? redaction_->key(entry.key) : entry.key)));
    return other_form(redaction_ ? redaction::json(entry.key, json) : json);
}

std::string recorder::failure(const subject& asked, const GError* error) {
    return failure_form(message(asked, error));
}

// The form of the failure's message.
std::string recorder::message(const subject& asked, const GError* error) {
    const std::string text = message_of(error);
    if (!first_failure_) {
        first_failure_ = text;
    }
    return recordable(asked, [&] {
        return text_form(redaction_ ? redaction::message() : text, "the message of the failure");
    });
}

// Returns what `make` returns, a form, and makes a note when there is none: whether that matters is
// known when all was asked.
template <class Make>
std::string recorder::recordable(const subject& asked, const Make& make) {
    try {
        return make();
    } catch (const not_recordable& wrong) {
        refuse(text_of(asked) + ": " + wrong.what());
        return "";
    }
}

// Says it on standard error, once: the channels of inputs are asked twice.
void recorder::note(const std::string& what) {
    if (notes_.insert(what).second) {
        std::fprintf(stderr, "oru-snapshot: %s\n", what.c_str());
    }
}

void recorder::refuse(std::string why) {
    if (!refusal_) {
        refusal_ = std::move(why);
    }
}

}  // namespace

std::string record_service(const recording_options& options) {
    return recorder(options.redact).record(options.about);
}
