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

    // Parts of answers.
    map_entries read_entries();
    qw::value read_value();
    qw::value read_number();
    qw::value read_typed_number();
    std::int64_t read_int64();
    double read_double();
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
    void read_formats();
    stream_record read_stream();
    channel_record read_channel();
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
    std::vector<placed<resolution_list>> lists_;
    std::vector<placed<mode_resolution>> modes_;
    std::vector<OruResolution> resolutions_;
    std::vector<placed<std::uint32_t>> ids_;  // of the list being read
};

void document_reader::read() {
    static constexpr std::array names{"system"sv, "mode"sv,   "stream"sv, "channel"sv,
                                      "input"sv,  "output"sv, "formats"sv};
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
            default:
                read_formats();
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

// Reads an object of any names, each with an answer, or a failure in its place.
template <class T, class Read>
answer<std::span<const named<T>>> document_reader::read_named(
    std::string_view what, std::vector<placed<named<T>>>& scratch, std::string_view element,
    Read&& read) {
    scratch.clear();
    std::optional<failure> fails;
    int members = 0;
    in_.object(what, [&](const word& name) {
        if (name.text == error_member && in_.peek() == '"') {
            fails = read_failure_text();
        } else {
            scratch.push_back({{name.text, array_or_failure(element, read)}, name.at});
        }
        if (++members > 1 && fails) {
            throw complaint{name.at, "a failure has no other member"};
        }
    });
    if (fails) {
        return *fails;
    }
    refuse_repeated_names(scratch, &named<T>::name);
    return keep(scratch, &placed<named<T>>::is);
}

answer<map_entries> document_reader::read_map() {
    const map_entries entries = read_entries();
    if (entries.size() == 1 && entries[0].key == error_member) {
        if (const auto text = entries[0].value.get_if<std::string_view>()) {
            return failure{text->data()};
        }
    }
    return entries;
}

// --- Parts of answers ---------------------------------------------------------------------------

map_entries document_reader::read_entries() {
    entries_.clear();
    bool ascending = true;
    in_.object("a map (an object)", [&](const word& name) {
        const qw::value value = read_value();
        ascending = ascending && (entries_.empty() || entries_.back().is.key < name.text);
        entries_.push_back({{name.text, value}, name.at});
    });
    if (!ascending) {
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
            return read_typed_number();
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

qw::value document_reader::read_typed_number() {
    const char* begin = in_.place();
    std::optional<qw::value> value;
    in_.object("'{'", [&](const word& kind) {
        if (value) {
            throw complaint{kind.at, "a typed number has one member"};
        }
        if (kind.text == "uint16") {
            value = static_cast<std::uint16_t>(in_.natural(UINT16_MAX));
        } else if (kind.text == "uint32") {
            value = in_.natural();
        } else if (kind.text == "int64") {
            value = read_int64();
        } else if (kind.text == "double") {
            value = read_double();
        } else {
            throw complaint{kind.at, std::format("unknown kind of number {}", quoted(kind.text))};
        }
    });
    if (!value) {
        throw complaint{begin, "expected a typed number, found an empty object"};
    }
    return *value;
}

std::int64_t document_reader::read_int64() {
    return in_.whole_value(in_.number("a whole number"));
}

double document_reader::read_double() {
    if (in_.peek() != '"') {
        return in_.double_value(in_.number("a number, \"nan\", \"inf\" or \"-inf\""));
    }
    const word name = in_.string("");
    if (name.text == "nan") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (name.text == "inf") {
        return std::numeric_limits<double>::infinity();
    }
    if (name.text == "-inf") {
        return -std::numeric_limits<double>::infinity();
    }
    throw complaint{name.at, "expected a number, \"nan\", \"inf\" or \"-inf\""};
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
        throw complaint{repeated->at, std::format("id {} is recorded twice", repeated->is)};
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
                if (records.all[i].id) {
                    records.index.emplace_back(*records.all[i].id, i);
                }
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
                doc_.channel_filtered = read_failure("a failure");
                break;
            default:
                doc_.channels = array_or_failure("an array of channels", [&] {
                    return read_list<channel_record>([&] { return read_channel(); });
                });
        }
    });
}

channel_record document_reader::read_channel() {
    static constexpr std::array names{"id"sv,   "properties"sv, "info"sv,
                                      "crop"sv, "crop_max"sv,   "resolutions"sv};
    channel_record channel;
    in_.object("a channel (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                channel.id = read_id();
                break;
            case 1:
                channel.properties = read_entries();
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
    return channel;
}

input_record document_reader::read_input() {
    static constexpr std::array names{"id"sv, error_member, "info"sv, "crop"sv,
                                      "resolution_unrotated"sv};
    input_record input;
    in_.object("an input (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                input.id = read_id();
                break;
            case 1:
                input.fails = read_failure_text();
                break;
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
    return input;
}

output_record document_reader::read_output() {
    static constexpr std::array names{"id"sv, error_member, "info"sv, "settings"sv};
    output_record output;
    in_.object("an output (an object)", names, [&](std::size_t which, const word&) {
        switch (which) {
            case 0:
                output.id = read_id();
                break;
            case 1:
                output.fails = read_failure_text();
                break;
            case 2:
                output.info = read_map();
                break;
            default:
                output.settings = read_map();
        }
    });
    return output;
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
