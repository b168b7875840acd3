#include "snapshot/reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot/failures.h"
#include "snapshot/json_reader.h"
#include "snapshot/keys.h"
#include "snapshot/map_reader.h"
#include "snapshot/utc_time.h"

namespace snapshot {
namespace {

class reader {
  public:
    explicit reader(answers& answers)
        : answers_(answers), in_(answers.text, answers.arena), maps_(in_, answers.arena) {}

    void read();

  private:
    // A member of an object: its name, and the function that reads its value into the record.
    template <class Record>
    struct member {
        std::string_view name;
        void (*read)(reader& in, Record& record);
    };
    template <class Record, std::size_t N>
    void read_members(std::string_view what, const member<Record> (&members)[N], Record& record);
    template <class Record, std::size_t N>
    void read_members_or_failure(std::string_view what, const member<Record> (&members)[N],
                                 Record& record, std::string_view rule);

    void read_version();
    std::string_view read_recorded();

    // Objects that occur once.
    template <class Record>
    struct opened : Record {
        std::optional<failure> fails;
    };
    template <class Record, std::size_t N>
    answer<Record> read_one(std::string_view what, const member<opened<Record>> (&members)[N]);
    answer<system_record> read_system();
    answer<mode_record> read_mode();
    void read_streams();
    void read_channels();
    void read_inputs();
    void read_outputs();
    std::vector<format_record> read_formats();

    // Objects in lists. A function that reads one returns the place of its id, which must be unique
    // in the list, or NULL if it need not be.
    template <class Record>
    answer<std::vector<Record>> read_list(std::string_view what,
                                          const char* (reader::*read)(Record& record));
    const char* read_stream(stream_record& stream);
    const char* read_channel(channel_record& channel);
    const char* read_input(input_record& input);
    const char* read_output(output_record& output);
    template <class Record, std::size_t N>
    const char* read_with_id(std::string_view what, const member<Record> (&members)[N],
                             Record& record);
    std::uint32_t read_id();

    // Answers other than maps.
    answer<rectangle> read_rectangle();
    answer<resolution> read_resolution();
    answer<std::span<const resolution>> read_resolutions();
    template <class T>
    using named_answers = named_items<named_answer<T>, &named_answer<T>::name>;
    template <class T>
    answer<std::span<const named_answer<T>>> read_by_name(named_answers<T>& scratch,
                                                          answer<T> (reader::*read)());

    answers& answers_;
    json_reader in_;
    map_reader maps_;
    const char* id_place_ = nullptr;  // of the record that is being read, once its id was read

    // Reused for every list, so that they are rarely reallocated.
    std::vector<placed_key<std::uint32_t>> ids_;
    named_answers<std::span<const resolution>> lists_;
    named_answers<resolution> modes_;
    std::vector<resolution> resolutions_;
};

void reader::read() {
    static constexpr member<answers> members[] = {
        {"version", [](reader& in, answers&) { in.read_version(); }},
        {"about",
         [](reader& in, answers& answers) { answers.about = in.in_.string("a text").text; }},
        {"recorded", [](reader& in, answers& answers) { answers.recorded = in.read_recorded(); }},
        {"system", [](reader& in, answers& answers) { answers.system = in.read_system(); }},
        {"mode", [](reader& in, answers& answers) { answers.mode = in.read_mode(); }},
        {"stream", [](reader& in, answers&) { in.read_streams(); }},
        {"channel", [](reader& in, answers&) { in.read_channels(); }},
        {"input", [](reader& in, answers&) { in.read_inputs(); }},
        {"output", [](reader& in, answers&) { in.read_outputs(); }},
        {"formats", [](reader& in, answers& answers) { answers.formats = in.read_formats(); }},
    };
    read_members("a snapshot (an object)", members, answers_);
    in_.finish();
}

// Reads an object of these members, each at most once.
template <class Record, std::size_t N>
void reader::read_members(std::string_view what, const member<Record> (&members)[N],
                          Record& record) {
    in_.object(what, members, [&](const auto& member, const word&) { member.read(*this, record); });
}

// The same for an object that can be a failure, which has no other member but an id. `rule` is the
// complaint about others.
template <class Record, std::size_t N>
void reader::read_members_or_failure(std::string_view what, const member<Record> (&members)[N],
                                     Record& record, std::string_view rule) {
    bool has_answers = false;
    in_.object(what, members, [&](const auto& member, const word& name) {
        member.read(*this, record);
        has_answers |= name.text != "id" && name.text != error_member;
        if (record.fails && has_answers) {
            throw complaint{name.at, std::string(rule)};
        }
    });
}

// --- About the snapshot -------------------------------------------------------------------------

void reader::read_version() {
    const std::string own = std::to_string(format_version);
    const written_number written = in_.number("the version of the format");
    const std::string_view digits = written.text;
    if (written.whole && digits.front() != '-' &&
        std::pair(digits.size(), digits) > std::pair(own.size(), std::string_view(own))) {
        constexpr std::size_t longest = 20;
        std::string newer(digits.substr(0, longest));
        newer += digits.size() > longest ? "..." : "";
        throw complaint{digits.data(), "version " + newer +
                                           " of the format is newer than version " + own +
                                           ", the newest that this program reads"};
    }
    if (digits != own) {
        throw complaint{digits.data(), expected("the version of the format, " + own)};
    }
}

std::string_view reader::read_recorded() {
    const word time = in_.string("a time");
    if (!seconds_of(time.text)) {
        throw complaint{time.at, expected("a time such as 2026-11-22T07:14:32Z, in UTC")};
    }
    return time.text;
}

// --- Objects that occur once --------------------------------------------------------------------

template <class Record, std::size_t N>
answer<Record> reader::read_one(std::string_view what, const member<opened<Record>> (&members)[N]) {
    opened<Record> record;
    read_members_or_failure(what, members, record, "a failure has no other member");
    if (record.fails) {
        return *record.fails;
    }
    return static_cast<Record>(record);
}

answer<system_record> reader::read_system() {
    using record = opened<system_record>;
    static constexpr member<record> members[] = {
        {error_member,
         [](reader& in, record& system) { system.fails = read_failure_text(in.in_); }},
        {"caps", [](reader& in, record& system) { system.caps = in.maps_.read(); }},
    };
    return read_one("the system (an object)", members);
}

answer<mode_record> reader::read_mode() {
    using record = opened<mode_record>;
    static constexpr member<record> members[] = {
        {error_member, [](reader& in, record& mode) { mode.fails = read_failure_text(in.in_); }},
        {"info", [](reader& in, record& mode) { mode.info = in.maps_.read(); }},
    };
    return read_one("the mode (an object)", members);
}

void reader::read_streams() {
    static constexpr member<answers> members[] = {
        {"debug", [](reader& in, answers& answers) { answers.stream_debug = in.maps_.read(); }},
        {"quota", [](reader& in, answers& answers) { answers.stream_quota = in.maps_.read(); }},
        {"limit", [](reader& in, answers& answers) { answers.stream_limit = in.maps_.read(); }},
        {"all",
         [](reader& in, answers& answers) {
             answers.streams = in.read_list("an array of streams", &reader::read_stream);
         }},
    };
    read_members("the streams (an object)", members, answers_);
}

void reader::read_channels() {
    static constexpr member<answers> members[] = {
        {"info", [](reader& in, answers& answers) { answers.channel_info = in.maps_.read(); }},
        {"all",
         [](reader& in, answers& answers) {
             answers.channels = in.read_list("an array of channels", &reader::read_channel);
         }},
        {"filtered",
         [](reader& in, answers& answers) {
             answers.channels_filtered =
                 in.read_list("an array of channels", &reader::read_channel);
         }},
    };
    read_members("the channels (an object)", members, answers_);
}

template <class Record>
void sort_by_id(answer<std::vector<Record>>& list) {
    if (auto* records = std::get_if<std::vector<Record>>(&list)) {
        for (std::size_t i = 0; i < records->size(); ++i) {
            (*records)[i].place = i;
        }
        std::ranges::sort(*records, {}, &Record::id);
    }
}

void reader::read_inputs() {
    static constexpr member<answers> members[] = {
        {"all",
         [](reader& in, answers& answers) {
             answers.inputs = in.read_list("an array of inputs", &reader::read_input);
         }},
    };
    read_members("the inputs (an object)", members, answers_);
    sort_by_id(answers_.inputs);
}

void reader::read_outputs() {
    static constexpr member<answers> members[] = {
        {"all",
         [](reader& in, answers& answers) {
             answers.outputs = in.read_list("an array of outputs", &reader::read_output);
         }},
    };
    read_members("the outputs (an object)", members, answers_);
    sort_by_id(answers_.outputs);
}

std::vector<format_record> reader::read_formats() {
    std::vector<format_record> formats;
    std::vector<placed_key<std::string_view>> nicks;
    in_.object("the formats (an object)", [&](const word& nick) {
        nicks.push_back({nick.text, nick.at, formats.size()});
        formats.push_back({nick.text, in_.natural()});
    });
    sort_names(nicks);
    return formats;
}

// --- Objects in lists ---------------------------------------------------------------------------

template <class Record>
answer<std::vector<Record>> reader::read_list(std::string_view what,
                                              const char* (reader::*read)(Record& record)) {
    return array_or_failure(in_, what, [&] {
        std::vector<Record> records;
        ids_.clear();
        in_.array(what, [&] {
            id_place_ = nullptr;
            Record& record = records.emplace_back();
            if (const char* place = (this->*read)(record); place != nullptr) {
                ids_.push_back({record.id, place, records.size() - 1});
            }
        });
        if (const auto* repeated = sort_ids(ids_); repeated != nullptr) {
            const bool has_no_id = *repeated->at == '{';
            throw complaint{repeated->at,
                            "id " + std::to_string(repeated->key) + " is recorded twice" +
                                (has_no_id ? ": a channel without an id has the id 0" : "")};
        }
        return records;
    });
}

const char* reader::read_stream(stream_record& stream) {
    static constexpr member<stream_record> members[] = {
        {"id", [](reader& in, stream_record& stream) { stream.id = in.read_id(); }},
        {"info", [](reader& in, stream_record& stream) { stream.info = in.maps_.read(); }},
        {"settings", [](reader& in, stream_record& stream) { stream.settings = in.maps_.read(); }},
        {"debug", [](reader& in, stream_record& stream) { stream.debug = in.maps_.read(); }},
    };
    read_members("a stream (an object)", members, stream);
    return stream.id != 0 ? id_place_ : nullptr;
}

const char* reader::read_channel(channel_record& channel) {
    using record = channel_record;
    static constexpr member<record> members[] = {
        {"id", [](reader& in, record& channel) { channel.id = in.read_id(); }},
        {"properties",
         [](reader& in, record& channel) { channel.properties = in.maps_.read_properties(); }},
        {"info", [](reader& in, record& channel) { channel.info = in.maps_.read(); }},
        {"crop", [](reader& in, record& channel) { channel.crop = in.read_rectangle(); }},
        {"crop_max", [](reader& in, record& channel) { channel.crop_max = in.read_resolution(); }},
        {"resolutions",
         [](reader& in, record& channel) {
             channel.resolutions = in.read_by_name(in.lists_, &reader::read_resolutions);
         }},
    };
    const char* begin = in_.place();
    read_members("a channel (an object)", members, channel);
    return id_place_ != nullptr ? id_place_ : begin;
}

const char* reader::read_input(input_record& input) {
    using record = input_record;
    static constexpr member<record> members[] = {
        {"id", [](reader& in, record& input) { input.id = in.read_id(); }},
        {error_member, [](reader& in, record& input) { input.fails = read_failure_text(in.in_); }},
        {"info", [](reader& in, record& input) { input.info = in.maps_.read(); }},
        {"crop", [](reader& in, record& input) { input.crop = in.read_rectangle(); }},
        {"resolution_unrotated",
         [](reader& in, record& input) {
             input.resolution_unrotated = in.read_by_name(in.modes_, &reader::read_resolution);
         }},
    };
    return read_with_id("an input (an object)", members, input);
}

const char* reader::read_output(output_record& output) {
    using record = output_record;
    static constexpr member<record> members[] = {
        {"id", [](reader& in, record& output) { output.id = in.read_id(); }},
        {error_member,
         [](reader& in, record& output) { output.fails = read_failure_text(in.in_); }},
        {"info", [](reader& in, record& output) { output.info = in.maps_.read(); }},
        {"settings", [](reader& in, record& output) { output.settings = in.maps_.read(); }},
    };
    return read_with_id("an output (an object)", members, output);
}

// Reads an object that programs open by its id, or the failure to open it.
template <class Record, std::size_t N>
const char* reader::read_with_id(std::string_view what, const member<Record> (&members)[N],
                                 Record& record) {
    const char* begin = in_.place();
    read_members_or_failure(what, members, record, "a failure has no other member than the id");
    if (id_place_ == nullptr) {
        throw complaint{begin, expected(what) + " with an id"};
    }
    return id_place_;
}

std::uint32_t reader::read_id() {
    id_place_ = in_.place();
    return in_.natural();
}

// --- Answers other than maps --------------------------------------------------------------------

answer<rectangle> reader::read_rectangle() {
    constexpr std::string_view what = "[x, y, width, height]";
    return array_or_failure(in_, what, [&] {
        const auto [x, y, width, height] = in_.naturals<4>(what);
        return rectangle{x, y, width, height};
    });
}

answer<resolution> reader::read_resolution() {
    constexpr std::string_view what = "[width, height]";
    return array_or_failure(in_, what, [&] {
        const auto [width, height] = in_.naturals<2>(what);
        return resolution{width, height};
    });
}

answer<std::span<const resolution>> reader::read_resolutions() {
    constexpr std::string_view what = "an array of resolutions";
    return array_or_failure(in_, what, [&] {
        resolutions_.clear();
        in_.array(what, [&] {
            const auto [width, height] = in_.naturals<2>("[width, height]");
            resolutions_.push_back({width, height});
        });
        return answers_.arena.keep(resolutions_);
    });
}

// Reads an object of any names, with `read` for the answer of each.
template <class T>
answer<std::span<const named_answer<T>>> reader::read_by_name(named_answers<T>& scratch,
                                                              answer<T> (reader::*read)()) {
    scratch.clear();
    const auto failure = members_or_failure(
        in_, "the resolutions (an object)",
        [&](const word& name) { scratch.add({name.text, (this->*read)()}, name.at); });
    if (failure) {
        return *failure;
    }
    return scratch.keep(answers_.arena);
}

}  // namespace

void read(answers& answers) {
    reader(answers).read();
}

}  // namespace snapshot
