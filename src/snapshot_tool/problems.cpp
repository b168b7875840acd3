#include "snapshot_tool/problems.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <format>
#include <map>
#include <optional>

#include "snapshot/printable.h"
#include "snapshot_tool/figures.h"

namespace snapshot_tool {
namespace {

// In the order of the report.
enum class problem_kind { failed_query, no_signal, stream, used_up, not_listed };

struct problem {
    problem_kind kind;
    double weight;  // of problems of one kind, the heaviest is the worst
    std::string text;
};

// --- Failed queries -----------------------------------------------------------------------------

// The failures of one reason.
struct failure_group {
    snapshot::query first;
    std::optional<std::string_view> message;
    std::size_t count = 0;
    bool has_list = false;  // whether one of the queries is not about a single object
};

class failures {
  public:
    explicit failures(const device& device);

    void add_to(std::vector<problem>& problems) const;

  private:
    template <class Value>
    void add(const outcome<Value>& outcome) {
        if (!outcome) {
            add(outcome.error());
        }
    }
    void add(const reason& reason);

    std::vector<failure_group> groups_;
    // Of the groups, by the message of the service; none if the snapshot has no answer.
    std::map<std::optional<std::string_view>, std::size_t> indices_;
};

failures::failures(const device& device) {
    add(device.streams);
    if (device.streams) {
        for (const stream& stream : *device.streams) {
            add(stream.info);
            add(stream.settings);
            add(debug_of(stream));
        }
    }
    add(device.service);
    add(device.quota);
    add(device.stream_limit);
    add(device.channels);
    if (device.channels) {
        for (const channel& channel : *device.channels) {
            add(channel.can_crop);
            if (channel.crop) {
                add(*channel.crop);
                add(*channel.largest_crop);
            }
            add(channel.available);
        }
    }
    add(device.input_channels);
    if (device.input_channels) {
        // The same channels are in the list of all.
        const listed_numbers listed(device);
        for (const input_channel& channel : *device.input_channels) {
            if (!device.channels || !listed.has_channel(channel.id)) {
                add(channel.input);
            }
        }
    }
    add(device.input_count);
    for (const input& input : device.inputs) {
        // An input that cannot be opened, or captures nothing, has no signal.
        if (input.state) {
            add(input.state->can_crop);
            if (input.state->crop) {
                add(*input.state->crop);
            }
        }
    }
    add(device.output);
    if (device.output && *device.output) {
        add((*device.output)->settings);
        add((*device.output)->info);
    }
}

// Returns whether the snapshot has no answer. If it was queried through our client library, a
// message says so.
bool is_not_recorded(const reason& reason) {
    if (reason.message == nullptr) {
        return true;
    }
    const std::string_view message = reason.message;
    if (!message.ends_with("not recorded")) {
        return false;
    }
    snapshot::query all_names = reason.query;
    all_names.name = nullptr;
    return message == snapshot::not_recorded(reason.query) ||
           message == snapshot::not_recorded(all_names);
}

void failures::add(const reason& reason) {
    const auto message =
        is_not_recorded(reason) ? std::nullopt : std::optional<std::string_view>(reason.message);
    const auto [index, is_new] = indices_.try_emplace(message, groups_.size());
    if (is_new) {
        groups_.push_back({.first = reason.query, .message = message});
        groups_.back().first.name = nullptr;  // not every way to an answer has one
    }
    failure_group& group = groups_[index->second];
    ++group.count;
    group.has_list |= !reason.query.number;
}

void failures::add_to(std::vector<problem>& problems) const {
    for (const failure_group& group : groups_) {
        std::string text = snapshot::text_of(group.first);
        if (group.count > 1) {
            text +=
                std::format(" and {} more quer{}", group.count - 1, group.count == 2 ? "y" : "ies");
        }
        // One list is worse than any number of its elements.
        problems.push_back({.kind = problem_kind::failed_query,
                            .weight = static_cast<double>(group.count) + (group.has_list ? 1e9 : 0),
                            .text = failure_text(text, group.message.value_or("not recorded"))});
    }
}

// --- Others -------------------------------------------------------------------------------------

std::string name_of(const stream& stream) {
    std::string name = std::format("stream {}", stream.id);
    if (stream.settings && stream.settings->identity) {
        name += std::format(" ({})", short_text(24, *stream.settings->identity));
    }
    return name;
}

void add_inputs(const device& device, std::vector<problem>& problems) {
    for (const input& input : device.inputs) {
        if (!has_signal(input)) {
            const std::string why = !input.state            ? input.state.error().text()
                                    : !input.state->capture ? input.state->capture.error().text()
                                                            : "it captures 0x0";
            problems.push_back(
                {.kind = problem_kind::no_signal,
                 .weight = 0,
                 .text = std::format("input {} has no signal{}{}", input.id,
                                     why.empty() ? "" : ": ", snapshot::printable(why))});
        }
    }
}

void add_streams(const device& device, std::vector<problem>& problems) {
    if (!device.streams) {
        return;
    }
    for (const stream& stream : *device.streams) {
        if (fails_frames(stream)) {
            const std::uint32_t failed = *stream.info->failed_frames;
            const figure frames = stream.info->frames;
            problems.push_back(
                {.kind = problem_kind::stream,
                 .weight = failed / std::max(1.0, static_cast<double>(frames.value_or(0))),
                 .text = name_of(stream) +
                         (frames ? std::format(": {} of {} frames failed", failed, *frames)
                                 : std::format(": {} frames failed", failed))});
        }
        if (is_slow(stream)) {
            const std::uint32_t reached = *stream.info->frame_rate;
            const double asked = *stream.settings->frame_rate;
            problems.push_back({.kind = problem_kind::stream,
                                .weight = 1 - reached / asked,
                                .text = std::format("{}: {} of {} frames a second", name_of(stream),
                                                    reached, frame_rate_text(asked))});
        }
    }
}

void add_usage(const device& device, std::vector<problem>& problems) {
    const auto add = [&](figure used, const outcome<figure>& allowed, std::string_view what,
                         std::string (*write)(std::uint32_t), std::string_view unit) {
        const bool is_problem = is_nearly_used_up(used, allowed);
        if (is_problem) {
            problems.push_back({.kind = problem_kind::used_up,
                                .weight = static_cast<double>(*used) / **allowed,
                                .text = std::format("{}: {} of {}{} in use", what, write(*used),
                                                    write(**allowed), unit)});
        }
        return is_problem;
    };
    const auto quota = [&](figure stream_quota::* member) {
        return device.quota.transform([&](const stream_quota& quota) { return quota.*member; });
    };
    const figure capacity = in_use(device, &usage::capacity);
    add(capacity, quota(&stream_quota::hard), "buffers, hard quota", mebibytes_text, " MiB") ||
        add(capacity, quota(&stream_quota::soft), "buffers, soft quota", mebibytes_text, " MiB");
    add(
        in_use(device, &usage::encoded_streams), device.stream_limit, "encoded streams",
        [](std::uint32_t count) { return std::to_string(count); }, "");
}

figure unlisted_channel(const stream& stream, const listed_numbers& listed) {
    const figure channel = stream.info ? stream.info->channel : std::nullopt;
    return channel && !listed.has_channel(*channel) ? channel : std::nullopt;
}

figure unlisted_input(const stream& stream, const listed_numbers& listed) {
    const figure input = stream.info ? stream.info->input : std::nullopt;
    return input && !listed.has_input(*input) ? input : std::nullopt;
}

void add_names(const device& device, std::vector<problem>& problems) {
    const listed_numbers listed(device);
    const auto add = [&](std::string_view who, std::string_view what, std::uint32_t number) {
        problems.push_back(
            {.kind = problem_kind::not_listed,
             .weight = 0,
             .text = std::format("{} names {} {}, which is not in the list", who, what, number)});
    };
    if (device.streams) {
        for (const stream& stream : *device.streams) {
            if (const figure channel = unlisted_channel(stream, listed)) {
                add(name_of(stream), "channel", *channel);
            }
            if (const figure input = unlisted_input(stream, listed)) {
                add(name_of(stream), "input", *input);
            }
        }
    }
    if (device.input_channels) {
        for (const input_channel& channel : *device.input_channels) {
            if (channel.input && !listed.has_input(*channel.input)) {
                add(std::format("channel {}", channel.id), "input", *channel.input);
            }
        }
    }
}

}  // namespace

bool fails_frames(const stream& stream) {
    if (!stream.info || !stream.info->failed_frames) {
        return false;
    }
    // A service that counts no frames has none that did not fail.
    return std::uint64_t{*stream.info->failed_frames} * 1000 > stream.info->frames.value_or(0);
}

bool is_slow(const stream& stream) {
    if (!stream.info || !stream.settings || !stream.info->frame_rate ||
        !stream.settings->frame_rate || stream.info->run_time.value_or(0) < 10'000'000) {
        return false;
    }
    const double asked = *stream.settings->frame_rate;
    return std::isfinite(asked) && *stream.info->frame_rate < std::floor(0.9 * asked);
}

bool is_nearly_used_up(figure used, const outcome<figure>& allowed) {
    const std::uint64_t most = allowed ? allowed->value_or(0) : 0;
    return used && most != 0 && std::uint64_t{*used} * 10 > most * 9;
}

listed_numbers::listed_numbers(const device& device)
    : channels_(device.channels.transform([](const std::vector<channel>& channels) {
          std::vector<std::uint32_t> ids;
          ids.reserve(channels.size());
          for (const channel& channel : channels) {
              ids.push_back(channel.id);
          }
          std::ranges::sort(ids);
          return ids;
      })),
      input_count_(device.input_count) {}

bool listed_numbers::has_channel(std::uint32_t id) const {
    return !channels_ || std::ranges::binary_search(*channels_, id);
}

bool listed_numbers::has_input(std::uint32_t number) const {
    return !input_count_ || (number >= 1 && number <= *input_count_);
}

bool has_problem(const stream& stream, const listed_numbers& listed) {
    return !stream.info || !stream.settings || !debug_of(stream) || fails_frames(stream) ||
           is_slow(stream) || unlisted_channel(stream, listed) || unlisted_input(stream, listed);
}

bool has_problem(const channel& channel) {
    return !channel.can_crop || !channel.available ||
           (channel.crop && (!*channel.crop || !*channel.largest_crop));
}

bool has_problem(const input& input) {
    return !has_signal(input) || !input.state->can_crop ||
           (input.state->crop && !*input.state->crop);
}

std::vector<std::string> problems_of(const device& device) {
    std::vector<problem> problems;
    failures(device).add_to(problems);
    add_inputs(device, problems);
    add_streams(device, problems);
    add_usage(device, problems);
    add_names(device, problems);
    std::ranges::stable_sort(problems, [](const problem& one, const problem& other) {
        return one.kind != other.kind ? one.kind < other.kind : one.weight > other.weight;
    });
    std::vector<std::string> lines;
    lines.reserve(problems.size());
    for (problem& problem : problems) {
        lines.push_back(std::move(problem.text));
    }
    return lines;
}

}  // namespace snapshot_tool
