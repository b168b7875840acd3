#include "probe/queries.h"

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <string_view>
#include <tuple>
#include <type_traits>

#include <oru.h>

#include "video/error_message.h"

namespace {

// A query while it is tried.
class tried_query {
  public:
    tried_query(query_verdict& told, std::optional<std::string>& first_failure)
        : told_(told), first_failure_(first_failure) {}

    // `ask` passes an error on and gives what Owner takes over. An empty list is NULL and no
    // failure.
    template <class Owner, class Ask>
    void gives(std::string_view about, const Ask& ask);

    // `ask` also passes on the places of so many numbers, and gives TRUE or FALSE.
    template <std::size_t Count, class Ask>
    void fills(std::string_view about, const Ask& ask);

  private:
    // One answer, with an error asked for. Returns whether the query failed.
    void judge(query_verdict& now, std::string_view about, bool answered, bool may_be_nothing,
               const GError* error);

    query_verdict& told_;
    std::optional<std::string>& first_failure_;
};

void tried_query::judge(query_verdict& now, std::string_view about, bool answered,
                        bool may_be_nothing, const GError* error) {
    if (error == nullptr) {
        if (answered || may_be_nothing) {
            now.answering.is_right();
        } else {
            now.failing.departs(std::format("{}no answer, and no error", about));
        }
        return;
    }
    const char* message = error->message;
    if (!first_failure_) {
        first_failure_ = message != nullptr ? message : "";
    }
    if (answered) {
        now.answering.departs(std::format("{}an answer, and the error '{}'", about,
                                          message != nullptr ? message : ""));
    } else {
        now.failing.expect(message != nullptr, "{}an error without a message", about);
    }
}

void compare(query_verdict& now, std::string_view about, bool with, bool without) {
    if (with && !without) {
        now.answering.departs(
            std::format("{}an answer, but none when no error is asked for", about));
    } else if (!with && without) {
        now.failing.departs(std::format("{}a failure, but none when no error is asked for", about));
    }
}

std::string prefix(std::string_view about) {
    return about.empty() ? "" : std::format("{}: ", about);
}

template <class Owner, class Ask>
void tried_query::gives(std::string_view subject, const Ask& ask) {
    constexpr bool is_list = std::is_same_v<Owner, living_list>;
    const std::string about = prefix(subject);
    try_again(told_, [&](query_verdict& now) {
        const auto take = [&](GError** error) {
            if constexpr (is_list) {
                return watch(ask(error));
            } else {
                return Owner{ask(error)};
            }
        };
        owned_error error;
        bool with = false;
        {
            const Owner answer = take(std::out_ptr(error));
            with = answer.get() != nullptr;
            if constexpr (is_list) {
                for (const GList* link = answer.get(); link != nullptr; link = link->next) {
                    now.answering.expect(link->data != nullptr, "{}an element that is NULL", about);
                }
            }
        }
        judge(now, about, with, is_list, error.get());
        const Owner answer = take(nullptr);
        compare(now, about, with, answer.get() != nullptr);
    });
}

template <std::size_t Count, class Ask>
void tried_query::fills(std::string_view subject, const Ask& ask) {
    const std::string about = prefix(subject);
    try_again(told_, [&](query_verdict& now) {
        // A place that holds what it held before in both was not filled.
        std::array<guint32, Count> first;
        std::array<guint32, Count> second;
        first.fill(0xa5a5a5a5);
        second.fill(0x5a5a5a5a);
        const auto fill = [&](std::array<guint32, Count>& places, GError** error) {
            return std::apply([&](auto&... place) { return ask(&place..., error); }, places) !=
                   FALSE;
        };
        owned_error error;
        const bool with = fill(first, std::out_ptr(error));
        judge(now, about, with, false, error.get());
        const bool without = fill(second, nullptr);
        compare(now, about, with, without);
        if (with && without) {
            for (std::size_t i = 0; i < Count; ++i) {
                now.answering.expect(first[i] != 0xa5a5a5a5 || second[i] != 0x5a5a5a5a,
                                     "{}TRUE, and number {} of {} not filled in", about, i + 1,
                                     Count);
            }
        }
    });
}

// --- The queries --------------------------------------------------------------------------------

using map = owned_object<OruMap>;

// The map that an object gives.
template <class Object>
void map_of(tried_query& query, const std::string& name, const living<Object>& object,
            OruMap* (*ask)(Object*, GError**)) {
    if (Object* asked = object.get(); asked != nullptr) {
        query.gives<map>(name, [&](GError** error) { return ask(asked, error); });
    }
}

template <class Object>
void map_of_each(tried_query& query, const std::vector<named<Object>>& all,
                 OruMap* (*ask)(Object*, GError**)) {
    for (const auto& [name, object] : all) {
        map_of(query, name, object, ask);
    }
}

// The numbers that an object gives.
template <std::size_t Count, class Object, class Ask>
void numbers_of_each(tried_query& query, const std::vector<named<Object>>& all, const Ask& ask) {
    for (const auto& [name, object] : all) {
        if (Object* asked = object.get(); asked != nullptr) {
            query.fills<Count>(name, [&](auto... out) { return ask(asked, out...); });
        }
    }
}

using service = probed_service;

void system_new(const service&, tried_query& query) {
    query.gives<living<OruSystem>>("", oru_system_new);
}
void system_get_caps(const service& has, tried_query& query) {
    map_of(query, "", has.system, oru_system_get_caps);
}
void mode_new(const service&, tried_query& query) {
    query.gives<living<OruMode>>("", oru_mode_new);
}
void mode_get_info(const service& has, tried_query& query) {
    map_of(query, "", has.mode, oru_mode_get_info);
}
void stream_get_all(const service&, tried_query& query) {
    query.gives<living_list>("", oru_stream_get_all);
}
void stream_get_info(const service& has, tried_query& query) {
    map_of_each(query, has.streams, oru_stream_get_info);
}
void stream_get_settings(const service& has, tried_query& query) {
    map_of_each(query, has.streams, oru_stream_get_settings);
}
void stream_get_debug(const service& has, tried_query& query) {
    map_of_each(query, has.streams, oru_stream_get_debug);
}
void stream_get_debug_of_all(const service&, tried_query& query) {
    query.gives<map>("", [](GError** error) { return oru_stream_get_debug(nullptr, error); });
}
void stream_get_quota(const service&, tried_query& query) {
    query.gives<map>("", oru_stream_get_quota);
}
void stream_get_limit(const service&, tried_query& query) {
    query.gives<map>("", oru_stream_get_limit);
}
void channel_get_all(const service&, tried_query& query) {
    query.gives<living_list>("", oru_channel_get_all);
}
void channel_get_filtered(const service&, tried_query& query) {
    if (const map filter = map_with("key", "input"); filter != nullptr) {
        query.gives<living_list>(
            "", [&](GError** error) { return oru_channel_get_filtered(filter.get(), error); });
    }
}
void channel_get_info(const service& has, tried_query& query) {
    map_of_each(query, has.channels, oru_channel_get_info);
}
void channel_get_info_of_all(const service&, tried_query& query) {
    query.gives<map>("", [](GError** error) { return oru_channel_get_info(nullptr, error); });
}
void channel_get_resolutions(const service& has, tried_query& query) {
    const map filter = map_with("select", "available");
    if (filter == nullptr) {
        return;
    }
    for (const auto& [name, channel] : has.channels) {
        if (OruChannel* asked = channel.get(); asked != nullptr) {
            query.gives<owned_block>(name, [&](GError** error) {
                return oru_channel_get_resolutions(asked, filter.get(), error);
            });
        }
    }
}
void channel_get_crop(const service& has, tried_query& query) {
    numbers_of_each<4>(query, has.channels, oru_channel_get_crop);
}
void channel_get_crop_max(const service& has, tried_query& query) {
    numbers_of_each<2>(query, has.channels, oru_channel_get_crop_max);
}
void input_new(const service& has, tried_query& query) {
    std::set<std::uint32_t> numbers = has.input_numbers;
    numbers.insert(no_input);
    for (const std::uint32_t number : numbers) {
        query.gives<living<OruInput>>(std::format("input {}", number),
                                      [&](GError** error) { return oru_input_new(number, error); });
    }
}
void input_get_info(const service& has, tried_query& query) {
    map_of_each(query, has.inputs, oru_input_get_info);
}
void input_get_crop(const service& has, tried_query& query) {
    numbers_of_each<4>(query, has.inputs, oru_input_get_crop);
}
void input_get_resolution_unrotated(const service& has, tried_query& query) {
    numbers_of_each<2>(query, has.inputs, [](OruInput* input, auto... out) {
        return oru_input_get_resolution_unrotated(input, "capture", out...);
    });
}
void output_new(const service&, tried_query& query) {
    query.gives<living<OruOutput>>("", [](GError** error) { return oru_output_new(0, error); });
}
void output_get_info(const service& has, tried_query& query) {
    map_of(query, "", has.output, oru_output_get_info);
}
void output_get_settings(const service& has, tried_query& query) {
    map_of(query, "", has.output, oru_output_get_settings);
}

struct query {
    const char* name;
    void (*run)(const service& has, tried_query& query);
};

// In the order in which `record` asks them.
constexpr query queries[] = {
    {"oru_system_new", system_new},
    {"oru_system_get_caps", system_get_caps},
    {"oru_mode_new", mode_new},
    {"oru_mode_get_info", mode_get_info},
    {"oru_stream_get_debug of the service", stream_get_debug_of_all},
    {"oru_stream_get_quota", stream_get_quota},
    {"oru_stream_get_limit", stream_get_limit},
    {"oru_stream_get_all", stream_get_all},
    {"oru_stream_get_info", stream_get_info},
    {"oru_stream_get_settings", stream_get_settings},
    {"oru_stream_get_debug", stream_get_debug},
    {"oru_channel_get_info of all channels", channel_get_info_of_all},
    {"oru_channel_get_all", channel_get_all},
    {"oru_channel_get_filtered", channel_get_filtered},
    {"oru_channel_get_info", channel_get_info},
    {"oru_channel_get_crop", channel_get_crop},
    {"oru_channel_get_crop_max", channel_get_crop_max},
    {"oru_channel_get_resolutions", channel_get_resolutions},
    {"oru_input_new", input_new},
    {"oru_input_get_info", input_get_info},
    {"oru_input_get_crop", input_get_crop},
    {"oru_input_get_resolution_unrotated", input_get_resolution_unrotated},
    {"oru_output_new", output_new},
    {"oru_output_get_info", output_get_info},
    {"oru_output_get_settings", output_get_settings},
};

}  // namespace

void query_verdict::add(const query_verdict& other) {
    answering.add(other.answering);
    failing.add(other.failing);
}

bool query_verdict::has_departed() const {
    return answering.has_departed() || failing.has_departed();
}

bool query_verdict::is_ok() const {
    return !has_departed() && (answering.is_ok() || failing.is_ok());
}

query_verdicts probe_queries(const probed_service& has) {
    query_verdicts found;
    for (const query& asked : queries) {
        query_verdict told{.name = asked.name, .answering = {}, .failing = {}};
        tried_query trying(told, found.first_failure);
        asked.run(has, trying);
        found.all.push_back(told);
    }
    return found;
}
