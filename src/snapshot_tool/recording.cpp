#include "snapshot_tool/recording.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <format>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string_view>
#include <variant>
#include <vector>

#include "snapshot/lookup.h"
#include "snapshot/printable.h"
#include "snapshot/writer.h"
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

// Return whether the writer writes both in the same form.
bool is_written_alike(const snapshot::value& one, const snapshot::value& other) {
    if (one.kind() != other.kind()) {
        return false;
    }
    switch (one.kind()) {
        case snapshot::kind::string:
            return one.get_if<std::string_view>() == other.get_if<std::string_view>();
        case snapshot::kind::other:
            return one.get_if<snapshot::other>() == other.get_if<snapshot::other>();
        case snapshot::kind::unwritable:
            return true;
        case snapshot::kind::float64: {
            const double left = *one.get_if<double>();
            const double right = *other.get_if<double>();
            return std::signbit(left) == std::signbit(right) &&
                   (left == right || (std::isnan(left) && std::isnan(right)));
        }
        case snapshot::kind::pair32u:
            return one.get_if<snapshot::pair32u>() == other.get_if<snapshot::pair32u>();
        case snapshot::kind::boolean:
            return one.get_if<bool>() == other.get_if<bool>();
        case snapshot::kind::int64:
            return one.get_if<std::int64_t>() == other.get_if<std::int64_t>();
        case snapshot::kind::uint16:
        case snapshot::kind::uint32:
            break;
    }
    return snapshot::widened<std::uint32_t>(one) == snapshot::widened<std::uint32_t>(other);
}

bool is_written_alike(const snapshot::rectangle& one, const snapshot::rectangle& other) {
    return one == other;
}

bool is_written_alike(const snapshot::resolution& one, const snapshot::resolution& other) {
    return one == other;
}

bool is_written_alike(map_entries one, map_entries other) {
    return std::ranges::equal(one, other, [](const auto& left, const auto& right) {
        return left.key == right.key && is_written_alike(left.value, right.value);
    });
}

bool is_written_alike(std::span<const snapshot::resolution> one,
                      std::span<const snapshot::resolution> other) {
    return std::ranges::equal(one, other);
}

template <class T>
bool is_written_alike(const answer<T>& one, const answer<T>& other);

template <class T>
bool is_written_alike(std::span<const snapshot::named_answer<T>> one,
                      std::span<const snapshot::named_answer<T>> other) {
    return std::ranges::equal(one, other, [](const auto& left, const auto& right) {
        return left.name == right.name && is_written_alike(left.value, right.value);
    });
}

template <class T>
bool is_written_alike(const answer<T>& one, const answer<T>& other) {
    if (one.index() != other.index()) {
        return false;
    }
    if (const auto* failure = std::get_if<snapshot::failure>(&one)) {
        return std::strcmp(failure->message, std::get<snapshot::failure>(other).message) == 0;
    }
    const auto* value = std::get_if<T>(&one);
    return value == nullptr || is_written_alike(*value, std::get<T>(other));
}

bool is_written_alike(const channel_record& one, const channel_record& other) {
    return one.id == other.id && is_written_alike(one.info, other.info) &&
           is_written_alike(one.crop, other.crop) &&
           is_written_alike(one.crop_max, other.crop_max) &&
           is_written_alike(one.resolutions, other.resolutions);
}

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
            return is_written_alike(channel, expected);
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

// Prints notes on standard error, each once: channels of inputs are in two lists.
class notes {
  public:
    void add(const snapshot::query& query, const answer<map_entries>& answer) {
        const auto* map = std::get_if<map_entries>(&answer);
        if (map == nullptr) {
            return;
        }
        for (const auto& [key, value] : *map) {
            if (value.kind() != snapshot::kind::other) {
                continue;
            }
            const std::string note = std::format(
                "oru-snapshot: {}: '{}' is of a kind without a form, recorded as JSON\n",
                snapshot::text_of(query), snapshot::printable(key));
            if (printed_.insert(note).second) {
                std::fputs(note.c_str(), stderr);
            }
        }
    }

  private:
    std::set<std::string> printed_;
};

template <class Record, class Function>
void for_each(const answer<std::vector<Record>>& list, const Function& function) {
    if (const auto* records = std::get_if<std::vector<Record>>(&list)) {
        std::ranges::for_each(*records, function);
    }
}

// Prints a note for each value that is recorded as JSON.
void print_notes(const snapshot::answers& all) {
    notes notes;
    if (const auto* system = std::get_if<snapshot::system_record>(&all.system)) {
        notes.add({"system caps"}, system->caps);
    }
    if (const auto* mode = std::get_if<snapshot::mode_record>(&all.mode)) {
        notes.add({"mode info"}, mode->info);
    }
    notes.add({"stream debug"}, all.stream_debug);
    notes.add({"stream quota"}, all.stream_quota);
    notes.add({"stream limit"}, all.stream_limit);
    for_each(all.streams, [&](const snapshot::stream_record& stream) {
        notes.add({"stream", stream.id, "info"}, stream.info);
        notes.add({"stream", stream.id, "settings"}, stream.settings);
        notes.add({"stream", stream.id, "debug"}, stream.debug);
    });
    notes.add({"channel info"}, all.channel_info);
    const auto add_channel = [&](const channel_record& channel) {
        notes.add({"channel", channel.id, "info"}, channel.info);
    };
    for_each(all.channels, add_channel);
    for_each(all.channels_filtered, add_channel);
    for_each(all.inputs, [&](const snapshot::input_record& input) {
        notes.add({"input", input.id, "info"}, input.info);
    });
    for_each(all.outputs, [&](const snapshot::output_record& output) {
        notes.add({"output", output.id, "info"}, output.info);
        notes.add({"output", output.id, "settings"}, output.settings);
    });
}

// --- Inputs -------------------------------------------------------------------------------------

// Prints a line if not every counted input was queried.
void print_unqueried_inputs(const snapshot::answers& all) {
    const auto* info = std::get_if<map_entries>(&all.channel_info);
    const std::uint32_t count = info != nullptr ? input_count(*info) : 0;
    const auto& inputs = std::get<std::vector<snapshot::input_record>>(all.inputs);
    const auto queried = std::ranges::count_if(inputs, [&](const snapshot::input_record& input) {
        return input.id >= 1 && input.id <= count;
    });
    if (queried < count) {
        std::fprintf(stderr,
                     "oru-snapshot: %u inputs counted, %u in a row do not exist: further ones are "
                     "recorded only if a channel names them\n",
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

}  // namespace

std::string record_service(const recording_options& options) {
    const auto answers = query_service(std::numeric_limits<std::uint32_t>::max());
    if (!snapshot::is_answered(*answers)) {
        throw std::runtime_error(std::get<snapshot::failure>(answers->system).message);
    }
    const auto recording =
        options.is_redacted ? redact(answers) : std::make_shared<snapshot::answers>(answers);
    if (options.about != nullptr) {
        recording->about = options.about;
    }
    print_unqueried_inputs(*recording);
    leave_out_missing_inputs(*recording);
    fold_filtered(*recording);
    print_notes(*recording);
    std::string text = snapshot::write(*recording);
    if (text.size() > longest_snapshot) {
        throw snapshot::not_recordable(
            std::format("the recording is {} bytes long, more than the {} of a snapshot",
                        text.size(), longest_snapshot));
    }
    return text;
}

}  // namespace snapshot_tool
