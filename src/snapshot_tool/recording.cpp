#include "snapshot_tool/recording.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <format>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "snapshot/comparison.h"
#include "snapshot/lookup.h"
#include "snapshot/printable.h"
#include "snapshot/utc_time.h"
#include "snapshot/writer.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/inputs.h"
#include "snapshot_tool/query.h"
#include "snapshot_tool/redaction.h"

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::channel_record;
using snapshot::map_entries;

constexpr std::size_t longest_snapshot = std::size_t{128} * 1024 * 1024;

// --- The filtered list --------------------------------------------------------------------------

// Omits the filtered list if its channels are in the list of all, with the same answers and in the
// same order. Properties then mark these channels in the list of all.
void fold_filtered(snapshot::answers& all) {
    static const snapshot::entry property[] = {{"key", std::string_view("input")}};
    auto* channels = std::get_if<std::vector<channel_record>>(&all.channels);
    const auto* filtered = std::get_if<std::vector<channel_record>>(&all.channels_filtered);
    if (channels == nullptr || filtered == nullptr) {
        return;
    }
    std::vector<channel_record> folded = *channels;
    for (auto rest = folded.begin(); const channel_record& expected : *filtered) {
        rest = std::find_if(rest, folded.end(), [&](const channel_record& channel) {
            return channel.id == expected.id && snapshot::has_same_answers(channel, expected);
        });
        if (rest == folded.end()) {
            return;
        }
        rest->properties = property;
        ++rest;
    }
    *channels = std::move(folded);
    all.channels_filtered = snapshot::left_out{};
}

// --- Notes --------------------------------------------------------------------------------------

// Prints a note on standard error for each value that is recorded as JSON, each once: channels of
// inputs are in two lists.
class notes {
  public:
    void print(const snapshot::answers& all) {
        snapshot::records::each_answer([&](const snapshot::document_member& at, auto member) {
            print({at.query}, all.*member);
        });
    }

  private:
    template <class T>
    void print(const snapshot::query& query, const answer<T>& answer) {
        if (const auto* value = std::get_if<T>(&answer)) {
            print(query, *value);
        }
    }

    template <class Record>
    void print(const snapshot::query&, const std::vector<Record>& records) {
        for (const Record& record : records) {
            print({Record::subject, record.id}, record);
        }
    }

    template <class Record>
        requires requires { Record::subject; }
    void print(const snapshot::query& query, const Record& record) {
        Record::each_answer([&](const char* name, auto member) {
            print({Record::subject, query.number, name}, record.*member);
        });
    }

    void print(const snapshot::query& query, map_entries map) {
        for (const auto& [key, value] : map) {
            if (value.kind() != snapshot::kind::other) {
                continue;
            }
            const std::string note =
                std::format("oru-snapshot: {}: '{}' is of an unknown kind: recorded as JSON\n",
                            snapshot::text_of(query), snapshot::printable(key));
            if (printed_.insert(note).second) {
                std::fputs(note.c_str(), stderr);
            }
        }
    }

    void print(const snapshot::query&, const auto&) {}  // other answers contain no such values

    std::set<std::string> printed_;
};

// --- Inputs -------------------------------------------------------------------------------------

// Prints a line if not every counted input was queried.
void print_unqueried_inputs(const snapshot::answers& all) {
    const auto* info = std::get_if<map_entries>(&all.channel_info);
    const std::uint32_t count = info != nullptr ? input_count(*info) : 0;
    const auto& inputs = std::get<std::vector<snapshot::input_record>>(all.inputs);
    const auto queried = std::ranges::count_if(inputs, [&](const snapshot::input_record& input) {
        return input.id >= 1 && input.id <= count;
    });
    if (std::cmp_less(queried, count)) {
        std::fprintf(
            stderr,
            "oru-snapshot: the service counts %u inputs, but %u in a row do not exist: of the "
            "others, only those that a channel names are recorded\n",
            count, most_missing_inputs);
    }
}

// An input that is only counted need not exist, so that its failure is not recorded.
void leave_out_missing_inputs(snapshot::answers& all) {
    const std::set<std::uint32_t> named_numbers = named_inputs(all);
    auto& inputs = std::get<std::vector<snapshot::input_record>>(all.inputs);
    std::erase_if(inputs, [&](const snapshot::input_record& input) {
        return input.fails && !named_numbers.contains(input.id);
    });
}

// --- The time -----------------------------------------------------------------------------------

// Returns the time of the clock, or that in the environment variable SOURCE_DATE_EPOCH.
std::string current_time() {
    const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (epoch == nullptr || *epoch == '\0') {
        const auto now = static_cast<std::int64_t>(std::time(nullptr));
        return snapshot::utc_time_of(std::clamp<std::int64_t>(now, 0, snapshot::last_second));
    }
    const std::string_view digits = epoch;
    std::uint64_t seconds = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (error != std::errc() || *end != '\0' || seconds > std::uint64_t{snapshot::last_second}) {
        throw std::runtime_error(
            std::format("SOURCE_DATE_EPOCH is '{}', not a whole number of seconds from 0 to {}",
                        snapshot::printable(digits), snapshot::last_second));
    }
    return snapshot::utc_time_of(static_cast<std::int64_t>(seconds));
}

// --- Options ------------------------------------------------------------------------------------

void complete(snapshot::answers& recording, const recording_options& options) {
    if (options.is_redacted) {
        redact(recording, options.redaction_key ? &*options.redaction_key : nullptr);
    }
    if (options.about != nullptr) {
        recording.about = options.about;
    }
}

template <class Record>
void sort_by_place(answer<std::vector<Record>>& list) {
    if (auto* records = std::get_if<std::vector<Record>>(&list)) {
        std::ranges::sort(*records, {}, &Record::place);
    }
}

}  // namespace

std::string record_service(const recording_options& options) {
    const std::string begin = current_time();
    const auto answers = query_service(std::numeric_limits<std::uint32_t>::max());
    if (!snapshot::is_answered(*answers)) {
        throw std::runtime_error(std::get<snapshot::failure>(answers->system).message);
    }
    snapshot::answers recording(answers);
    if (!recording.recorded) {  // A snapshot does not become new by being recorded again.
        recording.recorded = recording.arena.keep(begin);
    }
    complete(recording, options);
    print_unqueried_inputs(recording);
    leave_out_missing_inputs(recording);
    fold_filtered(recording);
    notes().print(recording);
    return snapshot::write(recording, longest_snapshot);
}

std::string record_file(const char* file, const recording_options& options) {
    const auto loaded = load_file(file);
    if (!loaded) {
        throw std::runtime_error(loaded.error());
    }
    snapshot::answers recording(*loaded);
    sort_by_place(recording.inputs);
    sort_by_place(recording.outputs);
    complete(recording, options);
    return snapshot::write(recording, longest_snapshot);
}

}  // namespace snapshot_tool
