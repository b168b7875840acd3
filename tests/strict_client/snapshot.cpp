#include "strict_client/snapshot.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include <nlohmann/json.hpp>

namespace strict {
namespace {

using json = nlohmann::json;

// An error in a snapshot.
struct broken {
    std::string reason;
};

// --- The text as a tree -------------------------------------------------------------------------

constexpr std::size_t deepest = 5000;

// A value with its tokens. The library's own values lose repeated members, -0 and the tokens, which
// the rules of snapshots and values of an unknown kind need.
enum class node_form { null, boolean, text, whole, too_large, fraction, list, object };

struct node {
    node_form form = node_form::null;
    std::string token;  // as written; not of a list or object
    std::string text = {};
    double real = 0;         // of every number
    std::int64_t whole = 0;  // of a whole number in the signed 64-bit range
    std::vector<node> elements = {};
    std::vector<std::pair<std::string, node>> members = {};
    std::vector<std::string> key_tokens = {};  // of the members
    std::string repeated = {};                 // the error if a member is repeated
};

// Returns the tokens of all strings in order. The library returns only their values.
std::vector<std::string_view> texts_of(std::string_view source) {
    std::vector<std::string_view> found;
    for (std::size_t at = 0; at < source.size(); ++at) {
        if (source.substr(at, 2) == "//") {
            at = source.find_first_of("\r\n", at);
        } else if (source.substr(at, 2) == "/*") {
            at = source.find("*/", at + 2);
        } else if (source[at] == '"') {
            const std::size_t begin = at;
            for (++at; at < source.size() && source[at] != '"'; ++at) {
                at += source[at] == '\\' ? 1 : 0;
            }
            found.push_back(source.substr(begin, at + 1 - begin));
        }
        if (at == std::string_view::npos) {
            break;
        }
    }
    return found;
}

class tree_builder : public nlohmann::json_sax<json> {
  public:
    explicit tree_builder(std::string_view source) : texts_(texts_of(source)) {}

    node root;

    bool null() override { return add({.form = node_form::null, .token = "null"}); }
    bool boolean(bool value) override {
        return add({.form = node_form::boolean, .token = value ? "true" : "false"});
    }
    // Called for numbers with a sign, so zero is -0.
    bool number_integer(std::int64_t value) override {
        return add({.form = node_form::whole,
                    .token = value == 0 ? "-0" : std::to_string(value),
                    .real = value == 0 ? -0.0 : static_cast<double>(value),
                    .whole = value});
    }
    bool number_unsigned(std::uint64_t value) override {
        const bool fits = value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
        return add({.form = fits ? node_form::whole : node_form::too_large,
                    .token = std::to_string(value),
                    .real = static_cast<double>(value),
                    .whole = fits ? static_cast<std::int64_t>(value) : 0});
    }
    // Also called for whole numbers beyond 64 bits.
    bool number_float(double value, const std::string& token) override {
        const bool whole = token.find_first_of(".eE") == std::string::npos;
        return add({.form = whole ? node_form::too_large : node_form::fraction,
                    .token = token,
                    .real = value});
    }
    bool string(std::string& value) override {
        return add({.form = node_form::text, .token = next_text(), .text = value});
    }
    bool binary(json::binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(node_form::object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(node_form::list); }
    bool end_array() override { return close(); }
    bool key(std::string& value) override {
        if (!names_.back().insert(value).second) {
            open_.back()->repeated = "member '" + value + "' is given twice";
        }
        open_.back()->key_tokens.push_back(next_text());
        open_.back()->members.emplace_back(value, node());
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const json::exception& wrong) override {
        const std::string_view what = wrong.what();
        throw broken(std::string(what.substr(0, what.find("; last read"))));
    }

  private:
    std::string next_text() { return std::string(texts_.at(next_++)); }

    node& place() {
        if (open_.empty()) {
            return root;
        }
        node& parent = *open_.back();
        return parent.form == node_form::list ? parent.elements.emplace_back()
                                              : parent.members.back().second;
    }
    bool add(node added) {
        place() = std::move(added);
        return true;
    }
    bool open(node_form form) {
        if (open_.size() == deepest) {
            throw broken("nests too deep");
        }
        node& opened = place();
        opened.form = form;
        open_.push_back(&opened);
        names_.emplace_back();
        return true;
    }
    bool close() {
        open_.pop_back();
        names_.pop_back();
        return true;
    }

    std::vector<std::string_view> texts_;
    std::size_t next_ = 0;
    std::vector<node*> open_;  // valid: each is the last element of its parent, so it is not moved
    std::vector<std::set<std::string>> names_;
};

// Returns the tokens of the value, joined.
std::string source_of(const node& parsed) {
    std::string text;
    if (parsed.form == node_form::list) {
        for (const node& element : parsed.elements) {
            text += (text.empty() ? "[" : ",") + source_of(element);
        }
        return text.empty() ? "[]" : text + ']';
    }
    if (parsed.form == node_form::object) {
        for (std::size_t i = 0; i < parsed.members.size(); ++i) {
            text += (text.empty() ? "{" : ",") + parsed.key_tokens[i] + ':' +
                    source_of(parsed.members[i].second);
        }
        return text.empty() ? "{}" : text + '}';
    }
    return parsed.token;
}

// --- The tree as a snapshot ---------------------------------------------------------------------

const node& expect(const node& parsed, node_form form, const char* what) {
    if (parsed.form != form) {
        throw broken("expected " + std::string(what) + ", found " +
                     source_of(parsed).substr(0, 40));
    }
    if (!parsed.repeated.empty()) {
        throw broken(parsed.repeated);
    }
    return parsed;
}

// The members of an object. end() rejects members that were never looked up.
class members_of {
  public:
    members_of(const node& object, const char* what)
        : object_(expect(object, node_form::object, what)) {}

    const node* find(const char* name) {
        looked_up_.insert(name);
        for (const auto& [other, member] : object_.members) {
            if (other == name) {
                return &member;
            }
        }
        return nullptr;
    }
    void end() const {
        for (const auto& [name, member] : object_.members) {
            if (!looked_up_.contains(name)) {
                throw broken("unknown member '" + name + "'");
            }
        }
    }

  private:
    const node& object_;
    std::set<std::string> looked_up_;
};

// Returns the member of that name if it is the only one of an object, otherwise NULL.
const node* only_member(const node& parsed, std::string_view name) {
    return parsed.form == node_form::object && parsed.members.size() == 1 &&
                   parsed.members[0].first == name
               ? &parsed.members[0].second
               : nullptr;
}

std::int64_t whole_number(const node& parsed, std::int64_t smallest, std::int64_t largest) {
    expect(parsed, node_form::whole, "a whole number");
    if (parsed.whole < smallest || parsed.whole > largest) {
        throw broken("the number " + parsed.token + " is out of range");
    }
    return parsed.whole;
}

std::uint32_t number(const node& parsed) {
    return static_cast<std::uint32_t>(
        whole_number(parsed, 0, std::numeric_limits<std::uint32_t>::max()));
}

std::string text_without_nul(std::string text) {
    if (text.contains('\0')) {
        throw broken("a text cannot contain a NUL");
    }
    return text;
}

std::string text(const node& parsed) {
    return text_without_nul(expect(parsed, node_form::text, "a text").text);
}

template <std::size_t Count>
std::array<std::uint32_t, Count> numbers(const node& parsed) {
    expect(parsed, node_form::list, "an array of numbers");
    if (parsed.elements.size() != Count) {
        throw broken("expected " + std::to_string(Count) + " numbers");
    }
    std::array<std::uint32_t, Count> read;
    for (std::size_t i = 0; i < Count; ++i) {
        read[i] = number(parsed.elements[i]);
    }
    return read;
}

std::string bytes_in_hexadecimal(const node& parsed) {
    const std::string digits = text(parsed);
    const auto value_of = [](char digit) {
        const std::size_t value = std::string_view("0123456789abcdef").find(digit);
        if (value == std::string_view::npos) {
            throw broken("expected lower-case hexadecimal digits");
        }
        return value;
    };
    if (digits.size() % 2 != 0) {
        throw broken("expected two digits for each byte");
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(value_of(digits[i]) * 16 + value_of(digits[i + 1]));
    }
    return text_without_nul(bytes);
}

double named_or_number(const node& parsed) {
    static const std::map<std::string, double> names = {
        {"nan", std::numeric_limits<double>::quiet_NaN()},
        {"-nan", -std::numeric_limits<double>::quiet_NaN()},
        {"inf", std::numeric_limits<double>::infinity()},
        {"-inf", -std::numeric_limits<double>::infinity()}};
    switch (parsed.form) {
        case node_form::whole:
        case node_form::too_large:
        case node_form::fraction:
            return parsed.real;
        default: {
            const auto named = names.find(text(parsed));
            if (named == names.end()) {
                throw broken("no number is called '" + parsed.text + "'");
            }
            return named->second;
        }
    }
}

qw::tagged value(const node& parsed) {
    using tagged = qw::tagged;
    switch (parsed.form) {
        case node_form::boolean:
            return {qw::tag_flag, parsed.token == "true"};
        case node_form::text:
            return {qw::tag_text, text(parsed)};
        case node_form::whole:
            if (parsed.whole >= 0 && parsed.whole <= std::numeric_limits<std::uint32_t>::max()) {
                return {qw::tag_u32, static_cast<std::uint64_t>(parsed.whole)};
            }
            return {qw::tag_i64, parsed.whole};
        case node_form::fraction:
            return {qw::tag_real, parsed.real};
        case node_form::list: {
            const auto [first, second] = numbers<2>(parsed);
            return {qw::tag_pair, std::pair(first, second)};
        }
        default:
            break;
    }
    const auto unsigned_up_to = [](const node& value_node, std::int64_t largest) {
        return static_cast<std::uint64_t>(whole_number(value_node, 0, largest));
    };
    const std::pair<const char*, std::function<tagged(const node&)>> named_kinds[] = {
        {"uint16",
         [&](const node& value_node) -> tagged {
             return {qw::tag_u16,
                     unsigned_up_to(value_node, std::numeric_limits<std::uint16_t>::max())};
         }},
        {"uint32",
         [&](const node& value_node) -> tagged {
             return {qw::tag_u32,
                     unsigned_up_to(value_node, std::numeric_limits<std::uint32_t>::max())};
         }},
        {"int64",
         [](const node& value_node) -> tagged {
             return {qw::tag_i64, whole_number(value_node, std::numeric_limits<std::int64_t>::min(),
                                               std::numeric_limits<std::int64_t>::max())};
         }},
        {"double",
         [](const node& value_node) -> tagged {
             return {qw::tag_real, named_or_number(value_node)};
         }},
        {"bytes",
         [](const node& value_node) -> tagged {
             return {qw::tag_text, bytes_in_hexadecimal(value_node)};
         }},
        {"other",
         [](const node& value_node) -> tagged {
             return {qw::tag_raw, qw::raw_json{source_of(value_node)}};
         }},
    };
    for (const auto& [name, read] : named_kinds) {
        if (const node* value_node = only_member(parsed, name)) {
            return read(*value_node);
        }
    }
    throw broken("no kind of value looks like " + source_of(parsed).substr(0, 40));
}

qw::map map(const node& parsed) {
    qw::map read;
    for (const auto& [key, value_node] : expect(parsed, node_form::object, "a map").members) {
        read.emplace(text_without_nul(key), value(value_node));
    }
    return read;
}

// Returns the failure that is recorded instead of an answer, if any.
std::optional<failure> failure_in(const node& parsed) {
    for (const auto& [name, member] : parsed.members) {
        if (name == "$error" && member.form == node_form::text) {
            if (parsed.members.size() > 1) {
                throw broken("a failure has no other member");
            }
            return failure{text(member)};
        }
    }
    return std::nullopt;
}

// Returns the answer at `place`. `read` reads one that is neither missing nor a failure.
template <class Read>
auto answer_in(const node* place, const Read& read) -> answer<decltype(read(*place))> {
    if (place == nullptr) {
        return {};
    }
    if (auto fails = failure_in(*place)) {
        return *std::move(fails);
    }
    return read(*place);
}

template <class Read>
auto named_answers(const node& parsed, const Read& read) {
    by_name<decltype(read(parsed))> all;
    for (const auto& [name, member] : expect(parsed, node_form::object, "an object").members) {
        all.emplace(text_without_nul(name), answer_in(&member, read));
    }
    return all;
}

std::vector<size> sizes(const node& parsed) {
    std::vector<size> all;
    for (const node& element : expect(parsed, node_form::list, "an array of sizes").elements) {
        all.push_back(numbers<2>(element));
    }
    return all;
}

void refuse_repeated(std::set<std::uint32_t>& seen, std::uint32_t id) {
    if (!seen.insert(id).second) {
        throw broken("id " + std::to_string(id) + " is recorded twice");
    }
}

std::vector<stream_record> streams(const node& parsed) {
    std::vector<stream_record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(parsed, node_form::list, "an array of streams").elements) {
        members_of members(element, "a stream");
        stream_record& stream = all.emplace_back();
        if (const node* id = members.find("id")) {
            stream.id = number(*id);
        }
        stream.info = answer_in(members.find("info"), map);
        stream.settings = answer_in(members.find("settings"), map);
        stream.debug = answer_in(members.find("debug"), map);
        members.end();
        if (stream.id != 0) {
            refuse_repeated(seen, stream.id);
        }
    }
    return all;
}

std::vector<channel_record> channels(const node& parsed) {
    std::vector<channel_record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(parsed, node_form::list, "an array of channels").elements) {
        members_of members(element, "a channel");
        channel_record& channel = all.emplace_back();
        if (const node* id = members.find("id")) {
            channel.id = number(*id);
        }
        if (const node* properties = members.find("properties")) {
            channel.properties = map(*properties);
        }
        channel.info = answer_in(members.find("info"), map);
        channel.crop = answer_in(members.find("crop"), numbers<4>);
        channel.crop_max = answer_in(members.find("crop_max"), numbers<2>);
        channel.resolutions = answer_in(members.find("resolutions"), [](const node& names) {
            return named_answers(names, sizes);
        });
        members.end();
        refuse_repeated(seen, channel.id);
    }
    return all;
}

// Reads a list of objects that are opened by number. An object that cannot be opened has only an id
// and its failure.
template <class Record, class Read>
by_id<Record> numbered(const node& parsed, const Read& read) {
    by_id<Record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(parsed, node_form::list, "an array of objects").elements) {
        members_of members(element, "an object");
        const node* id = members.find("id");
        if (id == nullptr) {
            throw broken("an element of a list has no id");
        }
        refuse_repeated(seen, number(*id));
        if (const node* fails = members.find("$error")) {
            all[number(*id)] = failure{text(*fails)};
        } else {
            Record record;
            read(members, record);
            all[number(*id)] = std::move(record);
        }
        members.end();
    }
    return all;
}

by_id<input_record> inputs(const node& parsed) {
    return numbered<input_record>(parsed, [](members_of& members, input_record& input) {
        input.info = answer_in(members.find("info"), map);
        input.crop = answer_in(members.find("crop"), numbers<4>);
        input.resolution_unrotated =
            answer_in(members.find("resolution_unrotated"),
                      [](const node& names) { return named_answers(names, numbers<2>); });
    });
}

by_id<output_record> outputs(const node& parsed) {
    return numbered<output_record>(parsed, [](members_of& members, output_record& output) {
        output.info = answer_in(members.find("info"), map);
        output.settings = answer_in(members.find("settings"), map);
    });
}

void check_time(const std::string& time) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::sscanf(time.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ", &year, &month, &day, &hour, &minute,
                &second);
    const bool is_leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    const int days[] = {31, is_leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool exists = year >= 1 && month >= 1 && month <= 12 && day >= 1 &&
                        day <= days[month - 1] && hour < 24 && minute < 60 && second < 60;
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, day, hour,
                  minute, second);
    if (!exists || time != text) {
        throw broken("'" + time + "' is not a time");
    }
}

snapshot document(const node& root) {
    snapshot read;
    members_of members(root, "a snapshot");
    if (const node* version = members.find("version")) {
        if (expect(*version, node_form::whole, "a version").token != "1") {
            throw broken("version " + version->token + " is not 1");
        }
    }
    if (const node* recorded = members.find("recorded")) {
        check_time(text(*recorded));
    }
    if (const node* about = members.find("about")) {
        expect(*about, node_form::text, "a text");
    }
    read.system = answer_in(members.find("system"), [](const node& parsed) {
        members_of system(parsed, "the system");
        system_record record{answer_in(system.find("caps"), map)};
        system.end();
        return record;
    });
    read.mode = answer_in(members.find("mode"), [](const node& parsed) {
        members_of mode(parsed, "the mode");
        mode_record record{answer_in(mode.find("info"), map)};
        mode.end();
        return record;
    });
    if (const node* parsed = members.find("stream")) {
        members_of stream(*parsed, "the streams");
        read.stream_debug = answer_in(stream.find("debug"), map);
        read.stream_quota = answer_in(stream.find("quota"), map);
        read.stream_limit = answer_in(stream.find("limit"), map);
        read.streams = answer_in(stream.find("all"), streams);
        stream.end();
    }
    if (const node* parsed = members.find("channel")) {
        members_of channel(*parsed, "the channels");
        read.channel_info = answer_in(channel.find("info"), map);
        read.channels = answer_in(channel.find("all"), channels);
        read.filtered = answer_in(channel.find("filtered"), channels);
        channel.end();
    }
    if (const node* parsed = members.find("input")) {
        members_of input(*parsed, "the inputs");
        read.inputs = answer_in(input.find("all"), inputs);
        input.end();
    }
    if (const node* parsed = members.find("output")) {
        members_of output(*parsed, "the outputs");
        read.outputs = answer_in(output.find("all"), outputs);
        output.end();
    }
    if (const node* parsed = members.find("formats")) {
        read.formats.clear();
        for (const auto& [nick, code] : expect(*parsed, node_form::object, "the formats").members) {
            read.formats.emplace_back(text_without_nul(nick), number(code));
        }
    }
    members.end();
    return read;
}

std::string content_of(const std::string& path) {
    const std::unique_ptr<std::FILE, decltype([](std::FILE* open) { std::fclose(open); })> file{
        std::fopen(path.c_str(), "re")};
    std::string content;
    if (file != nullptr) {
        char piece[65536];
        while (const std::size_t count = std::fread(piece, 1, sizeof piece, file.get())) {
            content.append(piece, count);
        }
    }
    if (file == nullptr || std::ferror(file.get()) != 0) {
        throw broken(std::strerror(errno));
    }
    return content;
}

snapshot read(const std::string& path) {
    const std::string source = content_of(path);
    if (source.contains('\0') || source.starts_with("\xEF\xBB\xBF")) {
        throw broken("is not plain JSON text");  // the library ignores both
    }
    tree_builder builder(source);
    json::sax_parse(source, &builder, json::input_format_t::json, true, true);
    return document(builder.root);
}

}  // namespace

const std::expected<snapshot, std::string>& current() {
    static const std::expected<snapshot, std::string>& snapshot_or_error = *new auto([] {
        const char* named = std::getenv("ORU_SNAPSHOT");
        const std::string path =
            named != nullptr && *named != '\0' ? named : "/run/oru/snapshot.json";
        try {
            return std::expected<snapshot, std::string>(read(path));
        } catch (const broken& wrong) {
            return std::expected<snapshot, std::string>(
                std::unexpected(path + ": " + wrong.reason));
        }
    }());
    return snapshot_or_error;
}

}  // namespace strict
