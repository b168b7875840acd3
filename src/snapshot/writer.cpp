#include "snapshot/writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include <glib.h>

#include "snapshot/lookup.h"
#include "snapshot/printable.h"

namespace snapshot {
namespace {

bool is_utf8(std::string_view text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

// Returns why a file cannot contain the text, or NULL if it can.
const char* flaw_of(std::string_view text) {
    if (text.contains('\0')) {
        return "holds a NUL";
    }
    return is_utf8(text) ? nullptr : "is no UTF-8";
}

// Returns why a file cannot contain the entry's value, or nothing if it can.
std::optional<std::string> flaw_of(const entry& entry) {
    const auto key = [&] { return "'" + printable(entry.key) + "'"; };
    if (const auto text = entry.value.get_if<std::string_view>()) {
        if (text->contains('\0')) {
            return "the text of " + key() + " holds a NUL";
        }
        if (entry.key == "$error" && is_utf8(*text)) {
            return "the value of '$error' is a text, as if this were a failure";
        }
    }
    if (const auto value = entry.value.get_if<unwritable>()) {
        return value->reason.empty()
                   ? "the JSON form of the value of " + key() + " is no JSON in UTF-8, or too deep"
                   : "the value of " + key() + ' ' + std::string(value->reason);
    }
    return std::nullopt;
}

class writer {
  public:
    explicit writer(const answers& answers) : answers_(answers) {}

    std::string write();

  private:
    // The members of the document, in its order.
    void write_system();
    void write_mode();
    void write_streams();
    void write_channels();
    void write_inputs();
    void write_outputs();
    void write_formats();

    template <class Record>
    void write_list(std::string_view name, const query& query,
                    const answer<std::vector<Record>>& list,
                    void (writer::*write_record)(const Record& record));
    void write_stream(const stream_record& stream);
    void write_channel(const channel_record& channel);
    void write_input(const input_record& input);
    void write_output(const output_record& output);
    template <class T>
    void write_by_name(std::string_view name, const query& query,
                       const answer<std::span<const named_answer<T>>>& answers);

    // Writes an answer as a member of the open object, unless it is left out.
    template <class T>
    void member(std::string_view name, const query& query, const answer<T>& answer);
    void write_value(const query& query, map_entries map);
    void write_value(const query&, const rectangle& area) {
        numbers({area.x, area.y, area.width, area.height});
    }
    void write_value(const query&, const resolution& size) { numbers({size.width, size.height}); }
    void write_value(const query&, std::span<const resolution> sizes);
    void write_value(const value& value);
    void write_failure(const query& query, const failure& failure);
    void checked_text(const query& query, std::string_view what, std::string_view text);

    // Open an object or array as a member of the open object, or an object as the next element of
    // the open array.
    void open_object(std::string_view name);
    void open_array(std::string_view name);
    void open_element();
    void close();
    void begin_item();
    void begin_member(std::string_view name);
    void open(char bracket);

    void string(std::string_view utf8);
    template <class Number>
    void number(Number digits);
    void numbers(std::initializer_list<std::uint32_t> numbers);
    template <class Write>
    void typed(std::string_view kind, const Write& write);

    const answers& answers_;
    std::string text_ = "{";
    std::string open_ = "}";       // the closing bracket of each open object and array
    std::set<std::uint32_t> ids_;  // of the list that is being written
};

std::string writer::write() {
    if (answers_.about) {
        begin_member("about");
        checked_text({"--about"}, "the text", *answers_.about);
    }
    write_system();
    write_mode();
    write_streams();
    write_channels();
    write_inputs();
    write_outputs();
    write_formats();
    close();
    text_ += '\n';
    return std::move(text_);
}

// --- The members of the document ----------------------------------------------------------------

template <class T>
bool is_given(const answer<T>& answer) {
    return !std::holds_alternative<left_out>(answer);
}

void writer::write_system() {
    if (const auto* system = std::get_if<system_record>(&answers_.system)) {
        open_object("system");
        member("caps", {"system caps"}, system->caps);
        close();
    } else {
        member("system", {"system"}, answers_.system);
    }
}

void writer::write_mode() {
    if (const auto* mode = std::get_if<mode_record>(&answers_.mode)) {
        open_object("mode");
        member("info", {"mode info"}, mode->info);
        close();
    } else {
        member("mode", {"mode"}, answers_.mode);
    }
}

void writer::write_streams() {
    if (!is_given(answers_.stream_debug) && !is_given(answers_.stream_quota) &&
        !is_given(answers_.stream_limit) && !is_given(answers_.streams)) {
        return;
    }
    open_object("stream");
    member("debug", {"stream debug"}, answers_.stream_debug);
    member("quota", {"stream quota"}, answers_.stream_quota);
    member("limit", {"stream limit"}, answers_.stream_limit);
    write_list("all", {"streams"}, answers_.streams, &writer::write_stream);
    close();
}

void writer::write_channels() {
    if (!is_given(answers_.channel_info) && !is_given(answers_.channels) &&
        !is_given(answers_.channels_filtered)) {
        return;
    }
    open_object("channel");
    member("info", {"channel info"}, answers_.channel_info);
    write_list("all", {"channels"}, answers_.channels, &writer::write_channel);
    write_list("filtered", {"channels of inputs"}, answers_.channels_filtered,
               &writer::write_channel);
    close();
}

void writer::write_inputs() {
    if (is_given(answers_.inputs)) {
        open_object("input");
        write_list("all", {"inputs"}, answers_.inputs, &writer::write_input);
        close();
    }
}

void writer::write_outputs() {
    if (is_given(answers_.outputs)) {
        open_object("output");
        write_list("all", {"outputs"}, answers_.outputs, &writer::write_output);
        close();
    }
}

void writer::write_formats() {
    if (!answers_.formats) {
        return;
    }
    std::vector<format_record> formats = *answers_.formats;
    std::ranges::stable_sort(formats, {}, &format_record::code);
    std::map<std::string_view, std::uint32_t> codes;
    for (const auto& [nick, code] : formats) {
        if (const auto [same, is_new] = codes.try_emplace(nick, code); !is_new) {
            throw not_recordable("formats " + std::to_string(same->second) + " and " +
                                 std::to_string(code) + " have one name, '" + printable(nick) +
                                 "'");
        }
    }
    std::vector<entry> entries;
    entries.reserve(formats.size());
    for (const auto& [nick, code] : formats) {
        entries.push_back({nick, code});
    }
    begin_member("formats");
    write_value({"formats"}, entries);
}

// --- Lists --------------------------------------------------------------------------------------

template <class Record>
void writer::write_list(std::string_view name, const query& query,
                        const answer<std::vector<Record>>& list,
                        void (writer::*write_record)(const Record& record)) {
    if (const auto* records = std::get_if<std::vector<Record>>(&list)) {
        ids_.clear();
        open_array(name);
        for (const Record& record : *records) {
            open_element();
            begin_member("id");
            number(record.id);
            (this->*write_record)(record);
            close();
        }
        close();
    } else {
        member(name, query, list);
    }
}

void writer::write_stream(const stream_record& stream) {
    const std::uint32_t id = stream.id;
    if (id != 0 && !ids_.insert(id).second) {
        throw not_recordable("stream " + std::to_string(id) + " is listed twice");
    }
    member("info", {"stream", id, "info"}, stream.info);
    member("settings", {"stream", id, "settings"}, stream.settings);
    member("debug", {"stream", id, "debug"}, stream.debug);
}

void writer::write_channel(const channel_record& channel) {
    const std::uint32_t id = channel.id;
    if (!channel.properties.empty()) {
        begin_member("properties");
        write_value({"channel", id, "properties"}, channel.properties);
    }
    member("info", {"channel", id, "info"}, channel.info);
    member("crop", {"channel", id, "crop"}, channel.crop);
    member("crop_max", {"channel", id, "crop_max"}, channel.crop_max);
    write_by_name("resolutions", {"channel", id, "resolutions"}, channel.resolutions);
    if (!ids_.insert(id).second) {
        throw not_recordable("channel " + std::to_string(id) + " is listed twice");
    }
}

void writer::write_input(const input_record& input) {
    const std::uint32_t id = input.id;
    if (input.fails) {
        begin_member("$error");
        checked_text({"input", id}, "the message of the failure", input.fails->message);
        return;
    }
    member("info", {"input", id, "info"}, input.info);
    member("crop", {"input", id, "crop"}, input.crop);
    write_by_name("resolution_unrotated", {"input", id, "resolution_unrotated"},
                  input.resolution_unrotated);
}

void writer::write_output(const output_record& output) {
    const std::uint32_t id = output.id;
    if (output.fails) {
        begin_member("$error");
        checked_text({"output", id}, "the message of the failure", output.fails->message);
        return;
    }
    member("info", {"output", id, "info"}, output.info);
    member("settings", {"output", id, "settings"}, output.settings);
}

template <class T>
void writer::write_by_name(std::string_view name, const query& query,
                           const answer<std::span<const named_answer<T>>>& answers) {
    if (const auto* list = std::get_if<std::span<const named_answer<T>>>(&answers)) {
        open_object(name);
        for (const auto& [answer_name, answer] : *list) {
            member(answer_name, query, answer);
        }
        close();
    } else {
        member(name, query, answers);
    }
}

// --- Answers ------------------------------------------------------------------------------------

template <class T>
void writer::member(std::string_view name, const query& query, const answer<T>& answer) {
    if (!is_given(answer)) {
        return;
    }
    begin_member(name);
    if (const auto* failure = std::get_if<snapshot::failure>(&answer)) {
        write_failure(query, *failure);
        return;
    }
    if constexpr (requires(const T& content) { write_value(query, content); }) {
        write_value(query, std::get<T>(answer));
    }
}

void writer::write_failure(const query& query, const failure& failure) {
    typed("$error", [&] { checked_text(query, "the message of the failure", failure.message); });
}

void writer::write_value(const query& query, map_entries map) {
    for (const entry& entry : map) {
        if (const auto flaw = flaw_of(entry)) {
            throw not_recordable(text_of(query) + ": " + *flaw);
        }
    }
    open('{');
    for (const auto& [key, value] : map) {
        if (const char* flaw = flaw_of(key)) {
            throw not_recordable(text_of(query) + ": the key '" + printable(key) + "' " + flaw);
        }
        begin_member(key);
        write_value(value);
    }
    close();
}

void writer::write_value(const query&, std::span<const resolution> sizes) {
    text_ += '[';
    for (bool is_first = true; const auto [width, height] : sizes) {
        text_ += is_first ? "" : ", ";
        is_first = false;
        numbers({width, height});
    }
    text_ += ']';
}

// In the shortest form that preserves the kind.
void writer::write_value(const value& value) {
    switch (value.kind()) {
        case kind::boolean:
            text_ += *value.get_if<bool>() ? "true" : "false";
            break;
        case kind::string: {
            const std::string_view text = *value.get_if<std::string_view>();
            if (is_utf8(text)) {
                string(text);
            } else {
                typed("bytes", [&] {
                    constexpr std::string_view digits = "0123456789abcdef";
                    text_ += '"';
                    for (const char byte : text) {
                        text_ += digits[static_cast<unsigned char>(byte) >> 4];
                        text_ += digits[static_cast<unsigned char>(byte) & 15];
                    }
                    text_ += '"';
                });
            }
            break;
        }
        case kind::int64: {
            const std::int64_t whole = *value.get_if<std::int64_t>();
            if (whole >= 0 && whole <= UINT32_MAX) {
                typed("int64", [&] { number(whole); });  // plain, it would be unsigned
            } else {
                number(whole);
            }
            break;
        }
        case kind::float64: {
            const double real = *value.get_if<double>();
            if (!std::isfinite(real)) {
                typed("double", [&] {
                    text_ += std::signbit(real) ? "\"-" : "\"";
                    text_ += std::isnan(real) ? "nan\"" : "inf\"";
                });
                break;
            }
            const std::size_t begin = text_.size();
            number(real);
            if (text_.find_first_of(".e", begin) == std::string::npos) {
                text_ += ".0";
            }
            break;
        }
        case kind::pair32u: {
            const auto [first, second] = *value.get_if<pair32u>();
            numbers({first, second});
            break;
        }
        case kind::other:
            typed("other", [&] { text_ += value.get_if<other>()->json; });
            break;
        case kind::uint16:
            typed("uint16", [&] { number(*value.get_if<std::uint16_t>()); });
            break;
        case kind::uint32:
            number(*value.get_if<std::uint32_t>());
            break;
        case kind::unwritable:
            break;  // a flaw
    }
}

void writer::checked_text(const query& query, std::string_view what, std::string_view text) {
    if (const char* flaw = flaw_of(text)) {
        throw not_recordable(text_of(query) + ": " + std::string(what) + ' ' + flaw);
    }
    string(text);
}

// --- The layout ---------------------------------------------------------------------------------

void writer::open_object(std::string_view name) {
    begin_member(name);
    open('{');
}

void writer::open_array(std::string_view name) {
    begin_member(name);
    open('[');
}

void writer::open_element() {
    begin_item();
    open('{');
}

void writer::close() {
    const bool is_empty = text_.back() == '{' || text_.back() == '[';
    const char bracket = open_.back();
    open_.pop_back();
    if (!is_empty) {
        text_ += '\n';
        text_.append(4 * open_.size(), ' ');
    }
    text_ += bracket;
}

void writer::begin_member(std::string_view name) {
    begin_item();
    string(name);
    text_ += ": ";
}

// Begins the next member or element of the innermost open object or array.
void writer::begin_item() {
    if (text_.back() != '{' && text_.back() != '[') {
        text_ += ',';
    }
    text_ += '\n';
    text_.append(4 * open_.size(), ' ');
}

void writer::open(char bracket) {
    text_ += bracket;
    open_ += bracket == '{' ? '}' : ']';
}

// --- Tokens -------------------------------------------------------------------------------------

void writer::string(std::string_view utf8) {
    constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view digits = "0123456789abcdef";
    const auto needs_escape = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
    };
    text_ += '"';
    while (true) {
        const auto special = std::ranges::find_if(utf8, needs_escape);
        text_.append(utf8.begin(), special);
        if (special == utf8.end()) {
            break;
        }
        text_ += '\\';
        if (const auto which = escaped.find(*special); which != std::string_view::npos) {
            text_ += letters[which];
        } else {
            text_ += "u00";
            text_ += digits[static_cast<unsigned char>(*special) >> 4];
            text_ += digits[static_cast<unsigned char>(*special) & 15];
        }
        utf8 = {special + 1, utf8.end()};
    }
    text_ += '"';
}

template <class Number>
void writer::number(Number digits) {
    std::array<char, 32> text;
    text_.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), digits).ptr);
}

void writer::numbers(std::initializer_list<std::uint32_t> numbers) {
    text_ += '[';
    for (bool is_first = true; const std::uint32_t natural : numbers) {
        text_ += is_first ? "" : ", ";
        is_first = false;
        number(natural);
    }
    text_ += ']';
}

// Writes a value in a form that names its kind.
template <class Write>
void writer::typed(std::string_view kind, const Write& write) {
    text_ += "{ \"";
    text_ += kind;
    text_ += "\": ";
    write();
    text_ += " }";
}

}  // namespace

std::string write(const answers& answers) {
    return writer(answers).write();
}

}  // namespace snapshot
