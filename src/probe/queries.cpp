#include "probe/queries.h"

#include <array>
#include <cstdint>
#include <format>
#include <memory>
#include <set>
#include <string_view>
#include <tuple>
#include <type_traits>

#include <oru.h>

#include "video/owned.h"

namespace probe {
namespace {

// --- One query ----------------------------------------------------------------------------------

// Runs one query on several objects, each time with a place for an error and then without. `name`
// is that of the object, and empty if there is only one.
class query_checker {
  public:
    query_checker(query_verdict& result, std::optional<std::string>& first_failure)
        : result_(result), first_failure_(first_failure) {}

    // Checks query(error), which returns what an Owner takes over. A tracked_list may be empty.
    template <class Owner, class Query>
    void check_returns(const std::string& name, const Query& query);

    // Checks query(out..., error), which writes `Count` numbers and returns TRUE or FALSE.
    template <std::size_t Count, class Query>
    void check_writes(const std::string& name, const Query& query);

  private:
    void check_error(query_verdict& attempt, std::string_view prefix, bool has_answer,
                     bool may_be_empty, const GError* error);

    query_verdict& result_;
    std::optional<std::string>& first_failure_;
};

std::string prefix_for(const std::string& name) {
    return name.empty() ? "" : name + ": ";
}

void query_checker::check_error(query_verdict& attempt, std::string_view prefix, bool has_answer,
                                bool may_be_empty, const GError* error) {
    if (error == nullptr) {
        if (has_answer || may_be_empty) {
            attempt.answering.pass();
        } else {
            attempt.failing.depart(std::format("{}no answer, and no error", prefix));
        }
        return;
    }
    const char* message = error->message;
    if (!first_failure_) {
        first_failure_ = message != nullptr ? message : "";
    }
    if (has_answer) {
        attempt.answering.depart(std::format("{}an answer, and the error '{}'", prefix,
                                             message != nullptr ? message : ""));
    } else {
        attempt.failing.expect(message != nullptr, "{}an error without a message", prefix);
    }
}

void expect_same(query_verdict& attempt, std::string_view prefix, bool has_answer,
                 bool has_answer_without_error) {
    if (has_answer && !has_answer_without_error) {
        attempt.answering.depart(
            std::format("{}an answer, but none if the error argument is NULL", prefix));
    } else if (!has_answer && has_answer_without_error) {
        attempt.failing.depart(
            std::format("{}a failure, but none if the error argument is NULL", prefix));
    }
}

template <class Owner, class Query>
void query_checker::check_returns(const std::string& name, const Query& query) {
    constexpr bool is_list = std::is_same_v<Owner, tracked_list>;
    const std::string prefix = prefix_for(name);
    retry_departure(result_, [&](query_verdict& attempt) {
        const auto run = [&](GError** error) {
            if constexpr (is_list) {
                return track(query(error));
            } else {
                return Owner{query(error)};
            }
        };
        owned_error error;
        bool has_answer = false;
        {
            const Owner answer = run(std::out_ptr(error));
            has_answer = answer.get() != nullptr;
            if constexpr (is_list) {
                for (const GList* link = answer.get(); link != nullptr; link = link->next) {
                    attempt.answering.expect(link->data != nullptr, "{}an element that is NULL",
                                             prefix);
                }
            }
        }
        check_error(attempt, prefix, has_answer, is_list, error.get());
        const Owner answer = run(nullptr);
        expect_same(attempt, prefix, has_answer, answer.get() != nullptr);
    });
}

template <std::size_t Count, class Query>
void query_checker::check_writes(const std::string& name, const Query& query) {
    const std::string prefix = prefix_for(name);
    retry_departure(result_, [&](query_verdict& attempt) {
        // A number that keeps its initial value in both calls was not written.
        constexpr guint32 first_initial = 0xa5a5a5a5;
        constexpr guint32 second_initial = 0x5a5a5a5a;
        std::array<guint32, Count> first;
        std::array<guint32, Count> second;
        first.fill(first_initial);
        second.fill(second_initial);
        const auto run = [&](std::array<guint32, Count>& numbers, GError** error) {
            return std::apply([&](auto&... number) { return query(&number..., error); }, numbers) !=
                   FALSE;
        };
        owned_error error;
        const bool has_answer = run(first, std::out_ptr(error));
        check_error(attempt, prefix, has_answer, false, error.get());
        const bool has_answer_without_error = run(second, nullptr);
        expect_same(attempt, prefix, has_answer, has_answer_without_error);
        if (has_answer && has_answer_without_error) {
            for (std::size_t i = 0; i < Count; ++i) {
                attempt.answering.expect(first[i] != first_initial || second[i] != second_initial,
                                         "{}TRUE, but value {} of {} is not set", prefix, i + 1,
                                         Count);
            }
        }
    });
}

// --- The queries --------------------------------------------------------------------------------

using owned_map = owned_object<OruMap>;

template <class Object>
void check_map(query_checker& checker, const std::string& name, const tracked<Object>& owner,
               OruMap* (*get)(Object*, GError**)) {
    if (Object* object = owner.get(); object != nullptr) {
        checker.check_returns<owned_map>(name, [&](GError** error) { return get(object, error); });
    }
}

template <class Object>
void check_maps(query_checker& checker, const std::vector<named_object<Object>>& objects,
                OruMap* (*get)(Object*, GError**)) {
    for (const auto& [name, object] : objects) {
        check_map(checker, name, object, get);
    }
}

template <std::size_t Count, class Object, class Get>
void check_numbers(query_checker& checker, const std::vector<named_object<Object>>& objects,
                   const Get& get) {
    for (const auto& [name, owner] : objects) {
        if (Object* object = owner.get(); object != nullptr) {
            checker.check_writes<Count>(name, [&](auto... out) { return get(object, out...); });
        }
    }
}

void system_new(const video_service&, query_checker& checker) {
    checker.check_returns<tracked<OruSystem>>("", oru_system_new);
}
void system_get_caps(const video_service& service, query_checker& checker) {
    check_map(checker, "", service.system, oru_system_get_caps);
}
void mode_new(const video_service&, query_checker& checker) {
    checker.check_returns<tracked<OruMode>>("", oru_mode_new);
}
void mode_get_info(const video_service& service, query_checker& checker) {
    check_map(checker, "", service.mode, oru_mode_get_info);
}
void stream_get_all(const video_service&, query_checker& checker) {
    checker.check_returns<tracked_list>("", oru_stream_get_all);
}
void stream_get_info(const video_service& service, query_checker& checker) {
    check_maps(checker, service.streams, oru_stream_get_info);
}
void stream_get_settings(const video_service& service, query_checker& checker) {
    check_maps(checker, service.streams, oru_stream_get_settings);
}
void stream_get_debug(const video_service& service, query_checker& checker) {
    check_maps(checker, service.streams, oru_stream_get_debug);
}
void stream_get_debug_of_service(const video_service&, query_checker& checker) {
    checker.check_returns<owned_map>(
        "", [](GError** error) { return oru_stream_get_debug(nullptr, error); });
}
void stream_get_quota(const video_service&, query_checker& checker) {
    checker.check_returns<owned_map>("", oru_stream_get_quota);
}
void stream_get_limit(const video_service&, query_checker& checker) {
    checker.check_returns<owned_map>("", oru_stream_get_limit);
}
void channel_get_all(const video_service&, query_checker& checker) {
    checker.check_returns<tracked_list>("", oru_channel_get_all);
}
void channel_get_filtered(const video_service&, query_checker& checker) {
    if (const owned_map filter = map_with("key", "input"); filter != nullptr) {
        checker.check_returns<tracked_list>(
            "", [&](GError** error) { return oru_channel_get_filtered(filter.get(), error); });
    }
}
void channel_get_info(const video_service& service, query_checker& checker) {
    check_maps(checker, service.channels, oru_channel_get_info);
}
void channel_get_info_of_service(const video_service&, query_checker& checker) {
    checker.check_returns<owned_map>(
        "", [](GError** error) { return oru_channel_get_info(nullptr, error); });
}
void channel_get_resolutions(const video_service& service, query_checker& checker) {
    const owned_map filter = map_with("select", "available");
    if (filter == nullptr) {
        return;
    }
    for (const auto& [name, owner] : service.channels) {
        if (OruChannel* channel = owner.get(); channel != nullptr) {
            checker.check_returns<owned_block>(name, [&](GError** error) {
                return oru_channel_get_resolutions(channel, filter.get(), error);
            });
        }
    }
}
void channel_get_crop(const video_service& service, query_checker& checker) {
    check_numbers<4>(checker, service.channels, oru_channel_get_crop);
}
void channel_get_crop_max(const video_service& service, query_checker& checker) {
    check_numbers<2>(checker, service.channels, oru_channel_get_crop_max);
}
void input_new(const video_service& service, query_checker& checker) {
    std::set<std::uint32_t> numbers = service.input_numbers;
    numbers.insert(absent_input);
    for (const std::uint32_t number : numbers) {
        checker.check_returns<tracked<OruInput>>(
            std::format("input {}", number),
            [&](GError** error) { return oru_input_new(number, error); });
    }
}
void input_get_info(const video_service& service, query_checker& checker) {
    check_maps(checker, service.inputs, oru_input_get_info);
}
void input_get_crop(const video_service& service, query_checker& checker) {
    check_numbers<4>(checker, service.inputs, oru_input_get_crop);
}
void input_get_resolution_unrotated(const video_service& service, query_checker& checker) {
    check_numbers<2>(checker, service.inputs, [](OruInput* input, auto... out) {
        return oru_input_get_resolution_unrotated(input, "capture", out...);
    });
}
void output_new(const video_service&, query_checker& checker) {
    checker.check_returns<tracked<OruOutput>>(
        "", [](GError** error) { return oru_output_new(0, error); });
}
void output_get_info(const video_service& service, query_checker& checker) {
    check_map(checker, "", service.output, oru_output_get_info);
}
void output_get_settings(const video_service& service, query_checker& checker) {
    check_map(checker, "", service.output, oru_output_get_settings);
}

struct query_check {
    const char* name;
    void (*check)(const video_service& service, query_checker& checker);
};

// In the order in which `oru-snapshot record` runs them.
constexpr query_check query_table[] = {
    {"oru_system_new", system_new},
    {"oru_system_get_caps", system_get_caps},
    {"oru_mode_new", mode_new},
    {"oru_mode_get_info", mode_get_info},
    {"oru_stream_get_debug of the service", stream_get_debug_of_service},
    {"oru_stream_get_quota", stream_get_quota},
    {"oru_stream_get_limit", stream_get_limit},
    {"oru_stream_get_all", stream_get_all},
    {"oru_stream_get_info", stream_get_info},
    {"oru_stream_get_settings", stream_get_settings},
    {"oru_stream_get_debug", stream_get_debug},
    {"oru_channel_get_info of all channels", channel_get_info_of_service},
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

bool query_verdict::has_passed() const {
    return !has_departed() && (answering.has_passed() || failing.has_passed());
}

query_verdicts check_queries(const video_service& service) {
    query_verdicts results;
    for (const query_check& each : query_table) {
        query_verdict result{.name = each.name};
        query_checker checker(result, results.first_failure);
        each.check(service, checker);
        results.all.push_back(result);
    }
    return results;
}

}  // namespace probe
