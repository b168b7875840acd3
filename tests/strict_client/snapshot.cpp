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

// What is wrong with a snapshot.
struct broken {
    std::string reason;
};

// --- The text as a tree -------------------------------------------------------------------------

constexpr std::size_t deepest = 5000;

// A value as it was written. The library's own values would lose what the snapshot's rules and the
// values of an unknown kind need: members given twice, -0, and the tokens themselves.
struct node {
    enum class form { null, boolean, text, whole, too_large, fraction, list, object };

    form is = form::null;
    std::string token;  // of a value that is neither list nor object, as it stood
    std::string text = {};
    double real = 0;         // of every number
    std::int64_t whole = 0;  // of a whole number in the signed 64-bit range
    std::vector<node> elements = {};
    std::vector<std::pair<std::string, node>> members = {};
    std::vector<std::string> key_tokens = {};  // of the members
    std::string repeated = {};                 // why these are none, when one is given twice
};

// The tokens of all texts, in their order. The library tells what they mean, not how they stood.
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

    bool null() override { return add({.is = node::form::null, .token = "null"}); }
    bool boolean(bool held) override {
        return add({.is = node::form::boolean, .token = held ? "true" : "false"});
    }
    // Of a number with a sign; the only one that is not below zero is -0.
    bool number_integer(std::int64_t held) override {
        return add({.is = node::form::whole,
                    .token = held == 0 ? "-0" : std::to_string(held),
                    .real = held == 0 ? -0.0 : static_cast<double>(held),
                    .whole = held});
    }
    bool number_unsigned(std::uint64_t held) override {
        const bool fits = held <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
        return add({.is = fits ? node::form::whole : node::form::too_large,
                    .token = std::to_string(held),
                    .real = static_cast<double>(held),
                    .whole = fits ? static_cast<std::int64_t>(held) : 0});
    }
    // Also of a whole number that 64 bits do not hold.
    bool number_float(double held, const std::string& token) override {
        const bool whole = token.find_first_of(".eE") == std::string::npos;
        return add({.is = whole ? node::form::too_large : node::form::fraction,
                    .token = token,
                    .real = held});
    }
    bool string(std::string& held) override {
        return add({.is = node::form::text, .token = next_text(), .text = held});
    }
    bool binary(json::binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(node::form::object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(node::form::list); }
    bool end_array() override { return close(); }
    bool key(std::string& held) override {
        if (!names_.back().insert(held).second) {
            open_.back()->repeated = "member '" + held + "' is given twice";
        }
        open_.back()->key_tokens.push_back(next_text());
        open_.back()->members.emplace_back(held, node());
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
        return parent.is == node::form::list ? parent.elements.emplace_back()
                                             : parent.members.back().second;
    }
    bool add(node added) {
        place() = std::move(added);
        return true;
    }
    bool open(node::form form) {
        if (open_.size() == deepest) {
            throw broken("nests too deep");
        }
        node& opened = place();
        opened.is = form;
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
    std::vector<node*> open_;  // a list or object that is open is not moved: it is the last one
    std::vector<std::set<std::string>> names_;
};

// The value as it was written, without what stands between its tokens.
std::string source_of(const node& of) {
    std::string text;
    if (of.is == node::form::list) {
        for (const node& element : of.elements) {
            text += (text.empty() ? "[" : ",") + source_of(element);
        }
        return text.empty() ? "[]" : text + ']';
    }
    if (of.is == node::form::object) {
        for (std::size_t i = 0; i < of.members.size(); ++i) {
            text += (text.empty() ? "{" : ",") + of.key_tokens[i] + ':' +
                    source_of(of.members[i].second);
        }
        return text.empty() ? "{}" : text + '}';
    }
    return of.token;
}

// --- The tree as a snapshot ---------------------------------------------------------------------

const node& expect(const node& of, node::form form, const char* what) {
    if (of.is != form) {
        throw broken("expected " + std::string(what) + ", found " + source_of(of).substr(0, 40));
    }
    if (!of.repeated.empty()) {
        throw broken(of.repeated);
    }
    return of;
}

// The members of an object, each of which is asked for; end() refuses what was not.
class members_of {
  public:
    members_of(const node& object, const char* what)
        : object_(expect(object, node::form::object, what)) {}

    const node* find(const char* name) {
        asked_.insert(name);
        for (const auto& [other, member] : object_.members) {
            if (other == name) {
                return &member;
            }
        }
        return nullptr;
    }
    void end() const {
        for (const auto& [name, member] : object_.members) {
            if (!asked_.contains(name)) {
                throw broken("unknown member '" + name + "'");
            }
        }
    }

  private:
    const node& object_;
    std::set<std::string> asked_;
};

// The member of an object that holds but this one, or NULL.
const node* only_member(const node& of, std::string_view name) {
    return of.is == node::form::object && of.members.size() == 1 && of.members[0].first == name
               ? &of.members[0].second
               : nullptr;
}

std::int64_t whole_number(const node& of, std::int64_t smallest, std::int64_t largest) {
    expect(of, node::form::whole, "a whole number");
    if (of.whole < smallest || of.whole > largest) {
        throw broken("the number " + of.token + " is out of range");
    }
    return of.whole;
}

std::uint32_t number(const node& of) {
    return static_cast<std::uint32_t>(
        whole_number(of, 0, std::numeric_limits<std::uint32_t>::max()));
}

std::string text_without_nul(std::string text) {
    if (text.contains('\0')) {
        throw broken("a text cannot hold a NUL");
    }
    return text;
}

std::string text(const node& of) {
    return text_without_nul(expect(of, node::form::text, "a text").text);
}

template <std::size_t Count>
std::array<std::uint32_t, Count> numbers(const node& of) {
    expect(of, node::form::list, "an array of numbers");
    if (of.elements.size() != Count) {
        throw broken("expected " + std::to_string(Count) + " numbers");
    }
    std::array<std::uint32_t, Count> read;
    for (std::size_t i = 0; i < Count; ++i) {
        read[i] = number(of.elements[i]);
    }
    return read;
}

std::string bytes_in_hexadecimal(const node& of) {
    const std::string digits = text(of);
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

double named_or_number(const node& of) {
    static const std::map<std::string, double> names = {
        {"nan", std::numeric_limits<double>::quiet_NaN()},
        {"-nan", -std::numeric_limits<double>::quiet_NaN()},
        {"inf", std::numeric_limits<double>::infinity()},
        {"-inf", -std::numeric_limits<double>::infinity()}};
    switch (of.is) {
        case node::form::whole:
        case node::form::too_large:
        case node::form::fraction:
            return of.real;
        default: {
            const auto named = names.find(text(of));
            if (named == names.end()) {
                throw broken("no number is called '" + of.text + "'");
            }
            return named->second;
        }
    }
}

qw::tagged value(const node& of) {
    using tagged = qw::tagged;
    switch (of.is) {
        case node::form::boolean:
            return {qw::tag_flag, of.token == "true"};
        case node::form::text:
            return {qw::tag_text, text(of)};
        case node::form::whole:
            if (of.whole >= 0 && of.whole <= std::numeric_limits<std::uint32_t>::max()) {
                return {qw::tag_u32, static_cast<std::uint64_t>(of.whole)};
            }
            return {qw::tag_i64, of.whole};
        case node::form::fraction:
            return {qw::tag_real, of.real};
        case node::form::list: {
            const auto [first, second] = numbers<2>(of);
            return {qw::tag_pair, std::pair(first, second)};
        }
        default:
            break;
    }
    const auto unsigned_up_to = [](const node& held, std::int64_t largest) {
        return static_cast<std::uint64_t>(whole_number(held, 0, largest));
    };
    const std::pair<const char*, std::function<tagged(const node&)>> named_kinds[] = {
        {"uint16",
         [&](const node& held) -> tagged {
             return {qw::tag_u16, unsigned_up_to(held, std::numeric_limits<std::uint16_t>::max())};
         }},
        {"uint32",
         [&](const node& held) -> tagged {
             return {qw::tag_u32, unsigned_up_to(held, std::numeric_limits<std::uint32_t>::max())};
         }},
        {"int64",
         [](const node& held) -> tagged {
             return {qw::tag_i64, whole_number(held, std::numeric_limits<std::int64_t>::min(),
                                               std::numeric_limits<std::int64_t>::max())};
         }},
        {"double",
         [](const node& held) -> tagged { return {qw::tag_real, named_or_number(held)}; }},
        {"bytes",
         [](const node& held) -> tagged { return {qw::tag_text, bytes_in_hexadecimal(held)}; }},
        {"other",
         [](const node& held) -> tagged { return {qw::tag_raw, qw::raw_json{source_of(held)}}; }},
    };
    for (const auto& [name, read] : named_kinds) {
        if (const node* held = only_member(of, name)) {
            return read(*held);
        }
    }
    throw broken("no kind of value looks like " + source_of(of).substr(0, 40));
}

qw::map map(const node& of) {
    qw::map read;
    for (const auto& [key, held] : expect(of, node::form::object, "a map").members) {
        read.emplace(text_without_nul(key), value(held));
    }
    return read;
}

// A failure in an answer's place, or none when it is something else.
std::optional<failure> failure_in(const node& of) {
    for (const auto& [name, member] : of.members) {
        if (name == "$error" && member.is == node::form::text) {
            if (of.members.size() > 1) {
                throw broken("a failure has no other member");
            }
            return failure{text(member)};
        }
    }
    return std::nullopt;
}

// What stands in an answer's place, `read` being told what to do with one that is given.
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
auto named_answers(const node& of, const Read& read) {
    by_name<decltype(read(of))> all;
    for (const auto& [name, member] : expect(of, node::form::object, "an object").members) {
        all.emplace(text_without_nul(name), answer_in(&member, read));
    }
    return all;
}

std::vector<size> sizes(const node& of) {
    std::vector<size> all;
    for (const node& element : expect(of, node::form::list, "an array of sizes").elements) {
        all.push_back(numbers<2>(element));
    }
    return all;
}

void refuse_repeated(std::set<std::uint32_t>& seen, std::uint32_t id) {
    if (!seen.insert(id).second) {
        throw broken("id " + std::to_string(id) + " is recorded twice");
    }
}

std::vector<stream_record> streams(const node& of) {
    std::vector<stream_record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(of, node::form::list, "an array of streams").elements) {
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

std::vector<channel_record> channels(const node& of) {
    std::vector<channel_record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(of, node::form::list, "an array of channels").elements) {
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

// A list of what is opened by its number; an element that cannot be opened has nothing but that.
template <class Record, class Read>
by_id<Record> numbered(const node& of, const Read& read) {
    by_id<Record> all;
    std::set<std::uint32_t> seen;
    for (const node& element : expect(of, node::form::list, "an array of objects").elements) {
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

by_id<input_record> inputs(const node& of) {
    return numbered<input_record>(of, [](members_of& members, input_record& input) {
        input.info = answer_in(members.find("info"), map);
        input.crop = answer_in(members.find("crop"), numbers<4>);
        input.resolution_unrotated =
            answer_in(members.find("resolution_unrotated"),
                      [](const node& names) { return named_answers(names, numbers<2>); });
    });
}

by_id<output_record> outputs(const node& of) {
    return numbered<output_record>(of, [](members_of& members, output_record& output) {
        output.info = answer_in(members.find("info"), map);
        output.settings = answer_in(members.find("settings"), map);
    });
}

snapshot document(const node& root) {
    snapshot read;
    members_of members(root, "a snapshot");
    if (const node* about = members.find("about")) {
        expect(*about, node::form::text, "a text");
    }
    read.system = answer_in(members.find("system"), [](const node& of) {
        members_of system(of, "the system");
        system_record record{answer_in(system.find("caps"), map)};
        system.end();
        return record;
    });
    read.mode = answer_in(members.find("mode"), [](const node& of) {
        members_of mode(of, "the mode");
        mode_record record{answer_in(mode.find("info"), map)};
        mode.end();
        return record;
    });
    if (const node* of = members.find("stream")) {
        members_of stream(*of, "the streams");
        read.stream_debug = answer_in(stream.find("debug"), map);
        read.stream_quota = answer_in(stream.find("quota"), map);
        read.stream_limit = answer_in(stream.find("limit"), map);
        read.streams = answer_in(stream.find("all"), streams);
        stream.end();
    }
    if (const node* of = members.find("channel")) {
        members_of channel(*of, "the channels");
        read.channel_info = answer_in(channel.find("info"), map);
        read.channels = answer_in(channel.find("all"), channels);
        read.filtered = answer_in(channel.find("filtered"), channels);
        channel.end();
    }
    if (const node* of = members.find("input")) {
        members_of input(*of, "the inputs");
        read.inputs = answer_in(input.find("all"), inputs);
        input.end();
    }
    if (const node* of = members.find("output")) {
        members_of output(*of, "the outputs");
        read.outputs = answer_in(output.find("all"), outputs);
        output.end();
    }
    if (const node* of = members.find("formats")) {
        read.formats.clear();
        for (const auto& [nick, code] : expect(*of, node::form::object, "the formats").members) {
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
        throw broken("is not plain JSON text");  // the library passes over both
    }
    tree_builder builder(source);
    json::sax_parse(source, &builder, json::input_format_t::json, true, true);
    return document(builder.root);
}

}  // namespace

const std::expected<snapshot, std::string>& current() {
    static const std::expected<snapshot, std::string>& now = *new auto([] {
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
    return now;
}

}  // namespace strict
