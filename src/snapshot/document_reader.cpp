#include "snapshot/document_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/failures.h"
#include "snapshot/json_reader.h"
#include "snapshot/keys.h"
#include "snapshot/map_reader.h"

namespace oru {
namespace {

class document_reader {
  public:
    explicit document_reader(document& doc) : doc_(doc), in_(doc.text, doc.arena), maps_(in_) {}

    void read();

  private:
    using self = document_reader;

    // A member of an object: its name, and what reads its value into the object's record.
    template <class Record>
    struct member {
        std::string_view name;
        void (*read)(self& in, Record& record);
    };
    template <class Record, std::size_t N>
    void read_members(std::string_view what, const member<Record> (&members)[N], Record& record);

    // Objects of which there is one.
    template <class Record>
    struct record_or_failure {
        Record record;
        std::optional<failure> fails;
    };
    template <class Record, std::size_t N>
    answer<Record> read_one(std::string_view what,
                            const member<record_or_failure<Record>> (&members)[N]);
    answer<system_record> read_system();
    answer<mode_record> read_mode();
    void read_streams();
    void read_channels();
    void read_inputs();
    void read_outputs();
    std::vector<format_record> read_formats();

    // Objects of which there are lists. Each of the functions that read one returns the place of an
    // id that no other of the list may have, or NULL.
    template <class Record>
    using record_reader = const char* (self::*)(Record& record);
    template <class Record>
    answer<std::vector<Record>> read_list(std::string_view what, record_reader<Record> read);
    template <class Record>
    answer<std::vector<Record>> read_by_id(std::string_view what, record_reader<Record> read);
    template <class Record, std::size_t N>
    const char* read_opened(std::string_view what, const member<Record> (&members)[N],
                            Record& record);
    const char* read_stream(stream_record& stream);
    const char* read_channel(channel_record& channel);
    const char* read_input(input_record& input);
    const char* read_output(output_record& output);
    std::uint32_t read_id();

    // Answers, maps apart.
    answer<rectangle> read_rectangle();
    answer<OruResolution> read_size();
    answer<std::span<const OruResolution>> read_sizes();
    template <class T>
    using named_answers = named_items<named<T>, &named<T>::name>;
    template <class T>
    answer<std::span<const named<T>>> read_resolutions(named_answers<T>& scratch,
                                                       answer<T> (self::*read)());

    document& doc_;
    json_reader in_;
    map_reader maps_;
    const char* id_place_ = nullptr;  // in the record that is being read, once it has an id

    // Used again by every list, so that they grow only for the largest.
    std::vector<placed_key<std::uint32_t>> ids_;
    named_answers<std::span<const OruResolution>> lists_;
    named_answers<OruResolution> modes_;
    std::vector<OruResolution> sizes_;
};

void document_reader::read() {
    static constexpr member<document> members[] = {
        {"about", [](self& in, document&) { in.in_.string("a text"); }},  // for people alone
        {"system", [](self& in, document& doc) { doc.system = in.read_system(); }},
        {"mode", [](self& in, document& doc) { doc.mode = in.read_mode(); }},
        {"stream", [](self& in, document&) { in.read_streams(); }},
        {"channel", [](self& in, document&) { in.read_channels(); }},
        {"input", [](self& in, document&) { in.read_inputs(); }},
        {"output", [](self& in, document&) { in.read_outputs(); }},
        {"formats", [](self& in, document& doc) { doc.formats = in.read_formats(); }},
    };
    read_members("a snapshot (an object)", members, doc_);
    in_.finish();
}

// Reads an object of these members, each at most once.
template <class Record, std::size_t N>
void document_reader::read_members(std::string_view what, const member<Record> (&members)[N],
                                   Record& record) {
    in_.object(what, members, [&](const auto& member, const word&) { member.read(*this, record); });
}

// --- Objects of which there is one --------------------------------------------------------------

template <class Record, std::size_t N>
answer<Record> document_reader::read_one(std::string_view what,
                                         const member<record_or_failure<Record>> (&members)[N]) {
    record_or_failure<Record> found;
    bool other_members = false;
    in_.object(what, members, [&](const auto& member, const word& name) {
        member.read(*this, found);
        if (found.fails && other_members) {
            throw complaint{name.at, "a failure has no other member"};
        }
        other_members = true;
    });
    if (found.fails) {
        return *found.fails;
    }
    return found.record;
}

answer<system_record> document_reader::read_system() {
    using found = record_or_failure<system_record>;
    static constexpr member<found> members[] = {
        {error_member, [](self& in, found& system) { system.fails = read_failure_text(in.in_); }},
        {"caps", [](self& in, found& system) { system.record.caps = in.maps_.read(); }},
    };
    return read_one("the system (an object)", members);
}

answer<mode_record> document_reader::read_mode() {
    using found = record_or_failure<mode_record>;
    static constexpr member<found> members[] = {
        {error_member, [](self& in, found& mode) { mode.fails = read_failure_text(in.in_); }},
        {"info", [](self& in, found& mode) { mode.record.info = in.maps_.read(); }},
    };
    return read_one("the mode (an object)", members);
}

void document_reader::read_streams() {
    static constexpr member<document> members[] = {
        {"debug", [](self& in, document& doc) { doc.stream_debug = in.maps_.read(); }},
        {"quota", [](self& in, document& doc) { doc.stream_quota = in.maps_.read(); }},
        {"limit", [](self& in, document& doc) { doc.stream_limit = in.maps_.read(); }},
        {"all",
         [](self& in, document& doc) {
             doc.streams = in.read_list("an array of streams", &self::read_stream);
         }},
    };
    read_members("the streams (an object)", members, doc_);
}

void document_reader::read_channels() {
    static constexpr member<document> members[] = {
        {"info", [](self& in, document& doc) { doc.channel_info = in.maps_.read(); }},
        {"all",
         [](self& in, document& doc) {
             doc.channels = in.read_list("an array of channels", &self::read_channel);
         }},
        {"filtered",
         [](self& in, document& doc) {
             doc.channels_filtered = in.read_list("an array of channels", &self::read_channel);
         }},
    };
    read_members("the channels (an object)", members, doc_);
}

void document_reader::read_inputs() {
    static constexpr member<document> members[] = {
        {"all",
         [](self& in, document& doc) {
             doc.inputs = in.read_by_id("an array of inputs", &self::read_input);
         }},
    };
    read_members("the inputs (an object)", members, doc_);
}

void document_reader::read_outputs() {
    static constexpr member<document> members[] = {
        {"all",
         [](self& in, document& doc) {
             doc.outputs = in.read_by_id("an array of outputs", &self::read_output);
         }},
    };
    read_members("the outputs (an object)", members, doc_);
}

std::vector<format_record> document_reader::read_formats() {
    std::vector<format_record> formats;
    std::vector<placed_key<std::string_view>> nicks;
    in_.object("the formats (an object)", [&](const word& nick) {
        nicks.push_back({nick.text, nick.at, formats.size()});
        formats.push_back({nick.text.data(), in_.natural()});
    });
    sort_names(nicks);
    return formats;
}

// --- Objects of which there are lists -----------------------------------------------------------

template <class Record>
answer<std::vector<Record>> document_reader::read_list(std::string_view what,
                                                       record_reader<Record> read) {
    return array_or_failure(in_, what, [&] {
        std::vector<Record> all;
        ids_.clear();
        in_.array(what, [&] {
            id_place_ = nullptr;
            Record& record = all.emplace_back();
            if (const char* place = (this->*read)(record); place != nullptr) {
                ids_.push_back({record.id, place, all.size() - 1});
            }
        });
        if (const auto* repeated = sort_ids(ids_); repeated != nullptr) {
            const bool is_left_out = *repeated->at == '{';
            throw complaint{repeated->at,
                            "id " + std::to_string(repeated->key) + " is recorded twice" +
                                (is_left_out ? ", which is that of a channel without one" : "")};
        }
        return all;
    });
}

// Reads a list whose records are only ever looked up by their ids.
template <class Record>
answer<std::vector<Record>> document_reader::read_by_id(std::string_view what,
                                                        record_reader<Record> read) {
    auto list = read_list(what, read);
    if (auto* all = std::get_if<std::vector<Record>>(&list); all != nullptr) {
        std::vector<Record> by_id;
        by_id.reserve(all->size());
        for (const auto& id : ids_) {
            by_id.push_back((*all)[id.item]);
        }
        *all = std::move(by_id);
    }
    return list;
}

// Reads what a program opens by its id, or the failure to open it: the id and nothing beside it.
template <class Record, std::size_t N>
const char* document_reader::read_opened(std::string_view what, const member<Record> (&members)[N],
                                         Record& record) {
    const char* begin = in_.place();
    int count = 0;
    in_.object(what, members, [&](const auto& member, const word& name) {
        member.read(*this, record);
        ++count;
        if (record.fails && count > (id_place_ != nullptr ? 2 : 1)) {
            throw complaint{name.at, "beside a failure stands the id and nothing else"};
        }
    });
    if (id_place_ == nullptr) {
        throw complaint{begin, expected(what) + " with an id"};
    }
    return id_place_;
}

std::uint32_t document_reader::read_id() {
    id_place_ = in_.place();
    return in_.natural();
}

const char* document_reader::read_stream(stream_record& stream) {
    static constexpr member<stream_record> members[] = {
        {"id", [](self& in, stream_record& stream) { stream.id = in.read_id(); }},
        {"info", [](self& in, stream_record& stream) { stream.info = in.maps_.read(); }},
        {"settings", [](self& in, stream_record& stream) { stream.settings = in.maps_.read(); }},
        {"debug", [](self& in, stream_record& stream) { stream.debug = in.maps_.read(); }},
    };
    read_members("a stream (an object)", members, stream);
    return stream.id != 0 ? id_place_ : nullptr;
}

const char* document_reader::read_channel(channel_record& channel) {
    using record = channel_record;
    static constexpr member<record> members[] = {
        {"id", [](self& in, record& channel) { channel.id = in.read_id(); }},
        {"properties",
         [](self& in, record& channel) { channel.properties = in.maps_.read_properties(); }},
        {"info", [](self& in, record& channel) { channel.info = in.maps_.read(); }},
        {"crop", [](self& in, record& channel) { channel.crop = in.read_rectangle(); }},
        {"crop_max", [](self& in, record& channel) { channel.crop_max = in.read_size(); }},
        {"resolutions",
         [](self& in, record& channel) {
             channel.resolutions = in.read_resolutions(in.lists_, &self::read_sizes);
         }},
    };
    const char* begin = in_.place();
    read_members("a channel (an object)", members, channel);
    return id_place_ != nullptr ? id_place_ : begin;
}

const char* document_reader::read_input(input_record& input) {
    using record = input_record;
    static constexpr member<record> members[] = {
        {"id", [](self& in, record& input) { input.id = in.read_id(); }},
        {error_member, [](self& in, record& input) { input.fails = read_failure_text(in.in_); }},
        {"info", [](self& in, record& input) { input.info = in.maps_.read(); }},
        {"crop", [](self& in, record& input) { input.crop = in.read_rectangle(); }},
        {"resolution_unrotated",
         [](self& in, record& input) {
             input.resolution_unrotated = in.read_resolutions(in.modes_, &self::read_size);
         }},
    };
    return read_opened("an input (an object)", members, input);
}

const char* document_reader::read_output(output_record& output) {
    using record = output_record;
    static constexpr member<record> members[] = {
        {"id", [](self& in, record& output) { output.id = in.read_id(); }},
        {error_member, [](self& in, record& output) { output.fails = read_failure_text(in.in_); }},
        {"info", [](self& in, record& output) { output.info = in.maps_.read(); }},
        {"settings", [](self& in, record& output) { output.settings = in.maps_.read(); }},
    };
    return read_opened("an output (an object)", members, output);
}

// --- Answers, maps apart ------------------------------------------------------------------------

answer<rectangle> document_reader::read_rectangle() {
    constexpr std::string_view what = "[x, y, width, height]";
    return array_or_failure(in_, what, [&] {
        const auto [x, y, width, height] = in_.naturals<4>(what);
        return rectangle{x, y, width, height};
    });
}

answer<OruResolution> document_reader::read_size() {
    constexpr std::string_view what = "[width, height]";
    return array_or_failure(in_, what, [&] {
        const auto [width, height] = in_.naturals<2>(what);
        return OruResolution{width, height};
    });
}

answer<std::span<const OruResolution>> document_reader::read_sizes() {
    constexpr std::string_view what = "an array of resolutions";
    return array_or_failure(in_, what, [&] {
        sizes_.clear();
        in_.array(what, [&] {
            const auto [width, height] = in_.naturals<2>("[width, height]");
            sizes_.push_back({width, height});
        });
        return in_.keep(sizes_);
    });
}

// Reads an object of any names, each with an answer that `read` reads.
template <class T>
answer<std::span<const named<T>>> document_reader::read_resolutions(named_answers<T>& scratch,
                                                                    answer<T> (self::*read)()) {
    scratch.clear();
    const auto fails = members_or_failure(
        in_, "the resolutions (an object)",
        [&](const word& name) { scratch.add({name.text, (this->*read)()}, name.at); });
    if (fails) {
        return *fails;
    }
    return scratch.keep(in_);
}

}  // namespace

void read_document(document& doc) {
    document_reader(doc).read();
}

}  // namespace oru
