#include "snapshot/writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "snapshot/failures.h"
#include "snapshot/lookup.h"
#include "snapshot/printable.h"
#include "snapshot/utf8.h"

namespace snapshot {
namespace {

// Returns why a file cannot contain the text, or NULL if it can.
const char* flaw_of(std::string_view text) {
    if (text.contains('\0')) {
        return "contains a NUL";
    }
    return is_utf8(text) ? nullptr : "is not valid UTF-8";
}

// Returns why a file cannot contain the entry's value, or nothing if it can.
std::optional<std::string> flaw_of(const entry& entry) {
    const auto key = [&] { return "'" + printable(entry.key) + "'"; };
    if (const auto text = entry.value.get_if<std::string_view>()) {
        if (text->contains('\0')) {
            return "the text of " + key() + " contains a NUL";
        }
        if (entry.key == error_member && is_utf8(*text)) {
            return "the value of '$error' is a text, which would be read as a failure";
        }
    }
    if (const auto value = entry.value.get_if<unwritable>()) {
        return value->reason.empty() ? "the JSON form of the value of " + key() +
                                           " is not valid JSON in UTF-8, or is nested too deeply"
                                     : "the value of " + key() + ' ' + std::string(value->reason);
    }
    return std::nullopt;
}

template <class T>
bool is_given(const answer<T>& answer) {
    return !std::holds_alternative<left_out>(answer);
}

class writer {
  public:
    writer(const answers& answers, std::size_t longest) : answers_(answers), longest_(longest) {}

    std::string write();

  private:
    void write_document();
    void write_formats();

    // Writes the answers of a record as members of the open object.
    template <class Record>
    void write_answers(const Record& record, std::optional<std::uint32_t> id = std::nullopt);

    // Write an answer as a member of the open object, unless it is left out.
    template <class T>
    void member(std::string_view name, const query& query, const answer<T>& answer);
    void member(std::string_view name, const query& query, map_entries properties);

    // Write what an answer contains.
    void write_value(const query&, const system_record& system) { write_object(system); }
    void write_value(const query&, const mode_record& mode) { write_object(mode); }
    template <class Record>
    void write_value(const query&, const std::vector<Record>& records);
    template <class Record>
    void write_object(const Record& record);
    template <class T>
    void write_value(const query& query, std::span<const named_answer<T>> answers);
    void write_value(const query& query, map_entries map);
    void write_value(const query&, const rectangle& area) {
        numbers({area.x, area.y, area.width, area.height});
    }
    void write_value(const query&, const resolution& size) { numbers({size.width, size.height}); }
    void write_value(const query&, std::span<const resolution> sizes);
    void write_value(const value& value);
    void write_failure(const query& query, const failure& failure);
    void checked_text(const query& query, std::string_view what, std::string_view text);

    void begin_item();
    void begin_member(std::string_view name);
    void open(char bracket);
    void close();

    void string(std::string_view utf8);
    template <class Number>
    void number(Number digits);
    void numbers(std::initializer_list<std::uint32_t> numbers);
    template <class Write>
    void typed(std::string_view kind, const Write& write);

    void check_length() const;

    const answers& answers_;
    const std::size_t longest_;
    std::string text_ = "{";
    std::string open_ = "}";  // the closing bracket of each open object and array
};

std::string writer::write() {
    begin_member("version");
    number(format_version);
    if (answers_.about) {
        begin_member("about");
        checked_text({"--about"}, "the text", *answers_.about);
    }
    if (answers_.recorded) {
        begin_member("recorded");
        string(*answers_.recorded);
    }
    write_document();
    write_formats();
    close();
    text_ += '\n';
    check_length();
    return std::move(text_);
}

void writer::write_document() {
    std::string_view object;  // that is open
    const auto close_object = [&] {
        if (!object.empty()) {
            close();
        }
    };
    records::each_answer([&](const document_member& at, auto place) {
        const auto& answer = answers_.*place;
        if (at.name == nullptr) {
            member(at.object, {at.query}, answer);
            return;
        }
        if (is_given(answer) && at.object != object) {
            close_object();
            object = at.object;
            begin_member(object);
            open('{');
        }
        member(at.name, {at.query}, answer);
    });
    close_object();
}

void writer::write_formats() {
    if (!answers_.formats) {
        return;
    }
    std::vector<format_record> formats = *answers_.formats;
    std::ranges::stable_sort(formats, {}, &format_record::code);
    std::vector<format_record> by_nick = formats;
    std::ranges::stable_sort(by_nick, {}, &format_record::nick);
    const auto same = std::ranges::adjacent_find(by_nick, {}, &format_record::nick);
    if (same != by_nick.end()) {
        throw not_recordable("formats " + std::to_string(same->code) + " and " +
                             std::to_string(std::next(same)->code) + " have the same name, '" +
                             printable(same->nick) + "'");
    }
    std::vector<entry> entries;
    entries.reserve(formats.size());
    for (const auto& [nick, code] : formats) {
        entries.push_back({nick, code});
    }
    begin_member("formats");
    write_value({"formats"}, map_entries(entries));
}

// --- Objects ------------------------------------------------------------------------------------

template <class Record>
void writer::write_answers(const Record& record, std::optional<std::uint32_t> id) {
    Record::each_answer([&](const char* name, auto place) {
        member(name, {Record::subject, id, name}, record.*place);
    });
}

template <class Record>
void writer::write_object(const Record& record) {
    open('{');
    write_answers(record);
    close();
}

template <class Record>
void writer::write_value(const query&, const std::vector<Record>& records) {
    std::set<std::uint32_t> ids;
    open('[');
    for (const Record& record : records) {
        const query query{Record::subject, record.id};
        const bool may_repeat = std::is_same_v<Record, stream_record> && record.id == 0;
        if (!may_repeat && !ids.insert(record.id).second) {
            throw not_recordable(text_of(query) + " is listed twice");
        }
        begin_item();
        open('{');
        begin_member("id");
        number(record.id);
        if constexpr (requires { record.fails; }) {
            if (record.fails) {
                begin_member(error_member);
                checked_text(query, "the message of the failure", record.fails->message);
                close();
                continue;
            }
        }
        write_answers(record, record.id);
        close();
    }
    close();
}

template <class T>
void writer::write_value(const query& query, std::span<const named_answer<T>> answers) {
    open('{');
    for (const auto& [name, answer] : answers) {
        member(name, query, answer);
    }
    close();
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
    write_value(query, std::get<T>(answer));
}

void writer::member(std::string_view name, const query& query, map_entries properties) {
    if (!properties.empty()) {
        begin_member(name);
        write_value(query, properties);
    }
}

void writer::write_failure(const query& query, const failure& failure) {
    typed(error_member,
          [&] { checked_text(query, "the message of the failure", failure.message); });
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
    check_length();
    if (text_.back() != '{' && text_.back() != '[') {
        text_ += ',';
    }
    text_ += '\n';
    text_.append(4 * open_.size(), ' ');
}

void writer::check_length() const {
    if (text_.size() > longest_) {
        throw not_recordable("the recording is longer than " + std::to_string(longest_) +
                             " bytes, the limit of a snapshot");
    }
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

std::string write(const answers& answers, std::size_t longest) {
    return writer(answers, longest).write();
}

}  // namespace snapshot
