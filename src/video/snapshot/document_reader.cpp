#include "document_reader.h"

#include <algorithm>
#include <format>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>

#include "json_reader.h"

namespace oru {
namespace {

using namespace std::string_view_literals;

constexpr auto error_member = "$error"sv;

constexpr std::pair<std::string_view, double> not_finite[] = {
    {"nan", std::numeric_limits<double>::quiet_NaN()},
    {"-nan", -std::numeric_limits<double>::quiet_NaN()},
    {"inf", std::numeric_limits<double>::infinity()},
    {"-inf", -std::numeric_limits<double>::infinity()},
};

// What was read, and the place in the text that names it.
template <class T>
struct placed {
    T is;
    const char* at;
};

// Sorts by key, then by place. Returns the first repetition in the order of the text, or NULL.
template <class T, class Key>
const placed<T>* sort_and_find_repetition(std::vector<placed<T>>& items, Key key) {
    const auto key_of = [&](const placed<T>& item) { return std::invoke(key, item.is); };
    std::ranges::sort(items, {},
                      [&](const placed<T>& item) { return std::pair(key_of(item), item.at); });
    const placed<T>* first = nullptr;
    for (std::size_t i = 1; i < items.size(); ++i) {
        if (key_of(items[i - 1]) == key_of(items[i]) && (!first || items[i].at < first->at)) {
            first = &items[i];
        }
    }
    return first;
}

// Complains about the first name that repeats an earlier one.
template <class T, class Name>
void refuse_repeated_names(std::vector<placed<T>>& items, Name name) {
    if (const auto* repeated = sort_and_find_repetition(items, name)) {
        throw complaint{repeated->at, std::format("duplicate member {}",
                                                  quoted(std::invoke(name, repeated->is)))};
    }
}

class document_reader {
  public:
    explicit document_reader(document& doc) : doc_(doc), in_(doc.text, doc.arena) {}

    void read();

  private:
    using entry = qw::map::entry;

    // Answers.
    failure read_failure_text();
    failure read_failure(std::string_view what);
    template <class Read>
    auto array_or_failure(std::string_view what, Read&& read) -> answer<std::invoke_result_t<Read>>;
    template <class Record>
    answer<Record> read_single(std::string_view what, std::string_view name,
                               answer<map_entries> Record::* member);
    template <class T, class Read>
    answer<std::span<const named<T>>> read_named(std::string_view what,
                                                 std::vector<placed<named<T>>>& scratch,
                                                 std::string_view element, Read&& read);
    answer<map_entries> read_map();
    template <class Read>
    std::optional<failure> members_or_failure(std::string_view what, Read&& read);

    // Parts of answers.
    map_entries read_properties();
    void read_entry(const word& key);
    map_entries keep_entries();
    qw::value read_value();
    qw::value read_number();
    qw::value read_typed_value();
    std::int64_t read_int64();
    double read_double();
    std::string_view read_bytes();
    template <std::size_t N>
    std::array<std::uint32_t, N> read_naturals(std::string_view what);
    rectangle read_rectangle();
    OruResolution read_resolution();
    std::span<const OruResolution> read_resolutions();

    // Objects of the service.
    std::uint32_t read_id();
    template <class Record, class Read>
    std::vector<Record> read_list(Read&& read_record);
    template <class Record, class Read>
    void read_indexed(std::string_view what, answer<indexed<Record>>& list, Read&& read_record);
    void read_streams();
    void read_channels();
    answer<std::vector<channel_record>> read_channel_list();
    void read_formats();
    stream_record read_stream();
    channel_record read_channel();
    template <class Record, class Read>
    Record read_opened(std::string_view what, std::span<const std::string_view> names, Read&& read);
    input_record read_input();
    output_record read_output();

    // Copies what was gathered into the document.
    template <class Item, class Part = std::identity>
    auto keep(const std::vector<Item>& items, Part part = {}) {
        using kept_type = std::remove_cvref_t<std::invoke_result_t<Part, const Item&>>;
        static_assert(std::is_trivially_destructible_v<kept_type>);  // the arena destroys nothing
        auto* kept = static_cast<kept_type*>(
            doc_.arena.allocate(items.size() * sizeof(kept_type), alignof(kept_type)));
        for (kept_type* at = kept; const Item& item : items) {
            std::construct_at(at++, std::invoke(part, item));
        }
        return std::span<const kept_type>(kept, items.size());
    }

    document& doc_;
    json_reader in_;

    // Used again by every map and list, so that they grow only for the largest.
    std::vector<placed<entry>> entries_;
    bool ascending_ = true;  // the keys of the entries, as far as they were read
    std::string bytes_;
    std::vector<placed<resolution_list>> lists_;
    std::vector<placed<mode_resolution>> modes_;
    std::vector<OruResolution> resolutions_;
    std::vector<placed<std::uint32_t>> ids_;  // of the list being read
};

void document_reader::read() {
    static constexpr std::array names{"system"sv, "mode"sv,   "stream"sv,  "channel"sv,
                                      "input"sv,  "output"sv, "formats"sv, "about"sv};
    in_.object("a snapshot (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                doc_.system = read_single("the system (an object)", "caps", &system_record::caps);
                break;
            case 1:
                doc_.mode = read_single("the mode (an object)", "info", &mode_record::info);
                break;
            case 2:
                read_streams();
                break;
            case 3:
                read_channels();
                break;
            case 4:
                read_indexed("the inputs (an object)", doc_.inputs, [&] { return read_input(); });
                break;
            case 5:
                read_indexed("the outputs (an object)", doc_.outputs,
                             [&] { return read_output(); });
                break;
            case 6:
                read_formats();
                break;
            default:
                in_.string("a text");  // for people alone
        }
    });
    in_.finish();
}

// --- Answers ------------------------------------------------------------------------------------

failure document_reader::read_failure_text() {
    return {in_.string("the text of a failure").text.data()};
}

failure document_reader::read_failure(std::string_view what) {
    in_.peek();
    const char* begin = in_.place();
    failure fails{nullptr};
    in_.object(what, std::array{error_member},
               [&](std::size_t, const word&) { fails = read_failure_text(); });
    if (!fails.message) {
        throw complaint{begin, std::format("expected {}, found an empty object", what)};
    }
    return fails;
}

template <class Read>
auto document_reader::array_or_failure(std::string_view what, Read&& read)
    -> answer<std::invoke_result_t<Read>> {
    if (in_.peek() == '{') {
        return read_failure(what);
    }
    return read();
}

// Reads an object whose one member is `name`, or a failure in its place.
template <class Record>
answer<Record> document_reader::read_single(std::string_view what, std::string_view name,
                                            answer<map_entries> Record::* member) {
    Record record;
    std::optional<failure> fails;
    int members = 0;
    in_.object(what, std::array{error_member, name}, [&](std::size_t which, const word& key) {
        if (which == 0) {
            fails = read_failure_text();
        } else {
            record.*member = read_map();
        }
        if (++members > 1) {
            throw complaint{key.at, "a failure has no other member"};
        }
    });
    if (fails) {
        return *fails;
    }
    return record;
}

// Reads an object of any names, `read(name)` each member's value. Returns the failure that may
// stand in its place: one without any other member.
template <class Read>
std::optional<failure> document_reader::members_or_failure(std::string_view what, Read&& read) {
    std::optional<failure> fails;
    bool other_members = false;
    in_.object(what, [&](const word& name) {
        const bool failing = name.text == error_member && in_.peek() == '"';
        if (fails || (failing && other_members)) {
            throw complaint{name.at, "a failure has no other member"};
        }
        if (failing) {
            fails = read_failure_text();
        } else {
            other_members = true;
            read(name);
        }
    });
    return fails;
}

// Reads an object of any names, each with an answer, or a failure in its place.
template <class T, class Read>
answer<std::span<const named<T>>> document_reader::read_named(
    std::string_view what, std::vector<placed<named<T>>>& scratch, std::string_view element,
    Read&& read) {
    scratch.clear();
    const auto fails = members_or_failure(what, [&](const word& name) {
        scratch.push_back({{name.text, array_or_failure(element, read)}, name.at});
    });
    if (fails) {
        return *fails;
    }
    refuse_repeated_names(scratch, &named<T>::name);
    return keep(scratch, &placed<named<T>>::is);
}

answer<map_entries> document_reader::read_map() {
    entries_.clear();
    const auto fails =
        members_or_failure("a map (an object)", [&](const word& key) { read_entry(key); });
    if (fails) {
        return *fails;
    }
    return keep_entries();
}

// --- Parts of answers ---------------------------------------------------------------------------

// A map that is no answer, so that no failure can stand in its place.
map_entries document_reader::read_properties() {
    entries_.clear();
    in_.object("a map (an object)", [&](const word& key) { read_entry(key); });
    return keep_entries();
}

void document_reader::read_entry(const word& key) {
    const qw::value value = read_value();
    ascending_ = entries_.empty() || (ascending_ && entries_.back().is.key < key.text);
    entries_.push_back({{key.text, value}, key.at});
}

map_entries document_reader::keep_entries() {
    if (!entries_.empty() && !ascending_) {
        refuse_repeated_names(entries_, &entry::key);
    }
    return keep(entries_, &placed<entry>::is);
}

qw::value document_reader::read_value() {
    switch (in_.peek()) {
        case 't':
        case 'f':
            return in_.boolean("true or false");
        case '"':
            return in_.string("a text").text;
        case '[': {
            const auto [first, second] = read_naturals<2>("a pair (an array of two)");
            return qw::pair32u(first, second);
        }
        case '{':
            return read_typed_value();
        default:
            return read_number();
    }
}

qw::value document_reader::read_number() {
    const number written = in_.number("a map value");
    if (!written.whole) {
        return in_.double_value(written);
    }
    const std::int64_t value = in_.whole_value(written);
    if (value >= 0 && value <= UINT32_MAX) {
        return static_cast<std::uint32_t>(value);
    }
    return value;
}

qw::value document_reader::read_typed_value() {
    const char* begin = in_.place();
    std::optional<qw::value> value;
    in_.object("'{'", [&](const word& kind) {
        if (value) {
            throw complaint{kind.at, "a typed value has one member"};
        }
        if (kind.text == "uint16") {
            value = static_cast<std::uint16_t>(in_.natural(UINT16_MAX));
        } else if (kind.text == "uint32") {
            value = in_.natural();
        } else if (kind.text == "int64") {
            value = read_int64();
        } else if (kind.text == "double") {
            value = read_double();
        } else if (kind.text == "bytes") {
            value = read_bytes();
        } else if (kind.text == "other") {
            value = qw::other{in_.any_value()};
        } else {
            throw complaint{kind.at, std::format("unknown kind of value {}", quoted(kind.text))};
        }
    });
    if (!value) {
        throw complaint{begin, "expected a typed value, found an empty object"};
    }
    return *value;
}

std::int64_t document_reader::read_int64() {
    return in_.whole_value(in_.number("a whole number"));
}

double document_reader::read_double() {
    constexpr auto what = R"(a number, "nan", "-nan", "inf" or "-inf")"sv;
    if (in_.peek() != '"') {
        return in_.double_value(in_.number(what));
    }
    const word written = in_.string(what);
    for (const auto& [name, value] : not_finite) {
        if (written.text == name) {
            return value;
        }
    }
    throw complaint{written.at, std::format("expected {}", what)};
}

// A string of any bytes but NUL, written as lower-case hexadecimal digits.
std::string_view document_reader::read_bytes() {
    constexpr auto digits = "0123456789abcdef"sv;
    const word written = in_.string("hexadecimal digits");
    bytes_.clear();
    for (std::size_t i = 0; i < written.text.size(); i += 2) {
        const auto high = digits.find(written.text[i]);
        const auto low = digits.find(written.text.data()[i + 1]);  // the NUL behind it is none
        if (high == std::string_view::npos || low == std::string_view::npos) {
            throw complaint{written.at, "expected pairs of lower-case hexadecimal digits"};
        }
        if (high == 0 && low == 0) {
            throw complaint{written.at, "a text cannot hold a NUL"};
        }
        bytes_ += static_cast<char>(high << 4 | low);
    }
    return in_.keep(bytes_);
}

template <std::size_t N>
std::array<std::uint32_t, N> document_reader::read_naturals(std::string_view what) {
    std::array<std::uint32_t, N> numbers;
    in_.take('[', what);
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0) {
            in_.take(',', "','");
        }
        numbers[i] = in_.natural();
    }
    in_.take(']', "']'");
    return numbers;
}

rectangle document_reader::read_rectangle() {
    const auto [x, y, width, height] = read_naturals<4>("[x, y, width, height]");
    return {x, y, width, height};
}

OruResolution document_reader::read_resolution() {
    const auto [width, height] = read_naturals<2>("[width, height]");
    return {width, height};
}

std::span<const OruResolution> document_reader::read_resolutions() {
    resolutions_.clear();
    in_.array("an array of resolutions", [&] { resolutions_.push_back(read_resolution()); });
    return keep(resolutions_);
}

// --- Objects of the service ---------------------------------------------------------------------

std::uint32_t document_reader::read_id() {
    in_.peek();
    const char* place = in_.place();
    const std::uint32_t id = in_.natural();
    ids_.push_back({id, place});
    return id;
}

template <class Record, class Read>
std::vector<Record> document_reader::read_list(Read&& read_record) {
    std::vector<Record> all;
    ids_.clear();
    in_.array("an array of objects", [&] { all.push_back(read_record()); });
    if (const auto* repeated = sort_and_find_repetition(ids_, std::identity())) {
        const char* why = *repeated->at == '{' ? ", which is that of a channel without one" : "";
        throw complaint{repeated->at, std::format("id {} is recorded twice{}", repeated->is, why)};
    }
    return all;
}

template <class Record, class Read>
void document_reader::read_indexed(std::string_view what, answer<indexed<Record>>& list,
                                   Read&& read_record) {
    in_.object(what, std::array{"all"sv}, [&](std::size_t, const word&) {
        list = array_or_failure("an array of objects", [&] {
            indexed<Record> records{read_list<Record>(read_record), {}};
            for (std::size_t i = 0; i < records.all.size(); ++i) {
                records.index.emplace_back(records.all[i].id, i);
            }
            std::ranges::sort(records.index);
            return records;
        });
    });
}

void document_reader::read_streams() {
    static constexpr std::array names{"debug"sv, "quota"sv, "limit"sv, "all"sv};
    in_.object("the streams (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                doc_.stream_debug = read_map();
                break;
            case 1:
                doc_.stream_quota = read_map();
                break;
            case 2:
                doc_.stream_limit = read_map();
                break;
            default:
                doc_.streams = array_or_failure("an array of streams", [&] {
                    return read_list<stream_record>([&] { return read_stream(); });
                });
        }
    });
}

stream_record document_reader::read_stream() {
    static constexpr std::array names{"id"sv, "info"sv, "settings"sv, "debug"sv};
    stream_record stream;
    in_.object("a stream (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                stream.id = read_id();
                if (stream.id == 0) {
                    ids_.pop_back();  // several streams may have it
                }
                break;
            case 1:
                stream.info = read_map();
                break;
            case 2:
                stream.settings = read_map();
                break;
            default:
                stream.debug = read_map();
        }
    });
    return stream;
}

void document_reader::read_channels() {
    static constexpr std::array names{"info"sv, "filtered"sv, "all"sv};
    in_.object("the channels (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                doc_.channel_info = read_map();
                break;
            case 1:
                doc_.channels_filtered = read_channel_list();
                break;
            default:
                doc_.channels = read_channel_list();
        }
    });
}

answer<std::vector<channel_record>> document_reader::read_channel_list() {
    return array_or_failure("an array of channels", [&] {
        return read_list<channel_record>([&] { return read_channel(); });
    });
}

channel_record document_reader::read_channel() {
    static constexpr std::array names{"id"sv,   "properties"sv, "info"sv,
                                      "crop"sv, "crop_max"sv,   "resolutions"sv};
    channel_record channel;
    const char* begin = in_.place();
    const std::size_t ids = ids_.size();
    in_.object("a channel (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                channel.id = read_id();
                break;
            case 1:
                channel.properties = read_properties();
                break;
            case 2:
                channel.info = read_map();
                break;
            case 3:
                channel.crop =
                    array_or_failure("[x, y, width, height]", [&] { return read_rectangle(); });
                break;
            case 4:
                channel.crop_max =
                    array_or_failure("[width, height]", [&] { return read_resolution(); });
                break;
            default:
                channel.resolutions =
                    read_named("the resolutions (an object)", lists_, "an array of resolutions",
                               [&] { return read_resolutions(); });
        }
    });
    if (ids_.size() == ids) {
        ids_.push_back({channel.id, begin});
    }
    return channel;
}

// Reads an input or an output, with `read(which)` for its members but the id and a failure, which
// has no member beside it but the id.
template <class Record, class Read>
Record document_reader::read_opened(std::string_view what, std::span<const std::string_view> names,
                                    Read&& read) {
    Record record;
    in_.peek();
    const char* begin = in_.place();
    const std::size_t ids = ids_.size();
    bool other_members = false;
    in_.object(what, names, [&](std::size_t which, const word& name) {
        if (which == 0) {
            record.id = read_id();
            return;
        }
        if (which == 1) {
            record.fails = read_failure_text();
        } else {
            other_members = true;
            read(record, which);
        }
        if (record.fails && other_members) {
            throw complaint{name.at, "beside a failure stands the id and nothing else"};
        }
    });
    if (ids_.size() == ids) {
        throw complaint{begin, std::format("expected {} with an id", what)};
    }
    return record;
}

input_record document_reader::read_input() {
    static constexpr std::array names{"id"sv, error_member, "info"sv, "crop"sv,
                                      "resolution_unrotated"sv};
    return read_opened<input_record>(
        "an input (an object)", names, [&](input_record& input, std::size_t which) {
            switch (which) {
                case 2:
                    input.info = read_map();
                    break;
                case 3:
                    input.crop =
                        array_or_failure("[x, y, width, height]", [&] { return read_rectangle(); });
                    break;
                default:
                    input.resolution_unrotated =
                        read_named("the resolutions (an object)", modes_, "[width, height]",
                                   [&] { return read_resolution(); });
            }
        });
}

output_record document_reader::read_output() {
    static constexpr std::array names{"id"sv, error_member, "info"sv, "settings"sv};
    return read_opened<output_record>("an output (an object)", names,
                                      [&](output_record& output, std::size_t which) {
                                          (which == 2 ? output.info : output.settings) = read_map();
                                      });
}

void document_reader::read_formats() {
    std::vector<placed<std::string_view>> nicks;
    auto& formats = doc_.formats.emplace();
    in_.object("the formats (an object)", [&](const word& nick) {
        nicks.push_back({nick.text, nick.at});
        formats.push_back({nick.text.data(), in_.natural()});
    });
    refuse_repeated_names(nicks, std::identity());
}

}  // namespace

void read_document(document& doc) {
    document_reader(doc).read();
}

}  // namespace oru
