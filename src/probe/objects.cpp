// Checks of the service's objects and lists: ids, and references.
#include <cstdint>
#include <format>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/map_contents.h"

namespace probe {
namespace {

// --- Descriptions -------------------------------------------------------------------------------
//
// An object is recognized by its id and by the keys of its maps. Values may change at any time.

// `map` is taken over, and may be NULL.
std::string describe_keys(const char* map_name, OruMap* map) {
    const owned_object<OruMap> owner{map};
    if (map == nullptr) {
        return std::format(", no {}", map_name);
    }
    std::string text = std::format(", {} with", map_name);
    for (const text_entry& entry : contents_of(map)) {
        text += std::format(" '{}'", entry.key);
    }
    return text;
}

std::string describe(OruStream* stream) {
    return std::format("stream {}", oru_stream_get_id(stream)) +
           describe_keys("info", oru_stream_get_info(stream, nullptr)) +
           describe_keys("settings", oru_stream_get_settings(stream, nullptr)) +
           describe_keys("debug", oru_stream_get_debug(stream, nullptr));
}

std::string describe(OruChannel* channel) {
    return std::format("channel {}", oru_channel_get_id(channel)) +
           describe_keys("info", oru_channel_get_info(channel, nullptr));
}

std::string describe(OruInput* input) {
    return "input" + describe_keys("info", oru_input_get_info(input, nullptr));
}

std::string describe(OruOutput* output) {
    return "output" + describe_keys("info", oru_output_get_info(output, nullptr)) +
           describe_keys("settings", oru_output_get_settings(output, nullptr));
}

std::string describe(OruSystem* system) {
    return "system" + describe_keys("caps", oru_system_get_caps(system, nullptr));
}

std::string describe(OruMode* mode) {
    return "mode" + describe_keys("info", oru_mode_get_info(mode, nullptr));
}

std::string describe(OruMap* map) {
    std::string text = "map";
    for (const auto& [key, value] : contents_of(map)) {
        text += std::format(", '{}': {}", key, value);
    }
    return text;
}

template <class Object>
std::vector<std::string> describe_all(const std::vector<tracked<Object>>& objects) {
    std::vector<std::string> descriptions;
    descriptions.reserve(objects.size());
    for (const tracked<Object>& object : objects) {
        descriptions.push_back(describe(object.get()));
    }
    return descriptions;
}

// The object still exists and has the description that it had before.
template <class Object>
void expect_alive(verdict& result, const std::string& name, const tracked<Object>& object,
                  const std::string& before) {
    if (object.get() == nullptr) {
        result.depart(name + ": gone");
        return;
    }
    const std::string after = describe(object.get());
    result.expect(after == before, "{}: {}; before: {}", name, after, before);
}

// --- Ids ----------------------------------------------------------------------------------------

// An object keeps its id, and no two objects have the same id. `shared_id` is an exception that
// several objects may have.
template <class Object>
void check_ids(const std::vector<named_object<Object>>& objects, guint32 (*get_id)(Object*),
               std::optional<guint32> shared_id, verdict& result) {
    std::set<guint32> ids;
    for (const auto& [name, object] : objects) {
        if (object.get() == nullptr) {
            continue;
        }
        const guint32 first = get_id(object.get());
        const guint32 second = get_id(object.get());
        result.expect(first == second, "{}, and then {}", first, second);
        result.expect(first == shared_id || ids.insert(first).second, "two have the id {}", first);
    }
}

void check_stream_ids(const video_service& service, verdict& result) {
    check_ids(service.streams, oru_stream_get_id, 0, result);
}

void check_channel_ids(const video_service& service, verdict& result) {
    check_ids(service.channels, oru_channel_get_id, std::nullopt, result);
}

// A service may have an input with the highest number, but not one with the next lower number too.
void check_absent_input(const video_service&, verdict& result) {
    for (const std::uint32_t number : {absent_input, absent_input - 1}) {
        if (const tracked<OruInput> input{oru_input_new(number, nullptr)}; input.get() == nullptr) {
            result.pass();
            return;
        }
    }
    result.depart(std::format("there are inputs {} and {}", absent_input, absent_input - 1));
}

// --- References ---------------------------------------------------------------------------------

// Of two answers to one query, the second survives the release of the first.
template <class Object, class Query>
void check_two_answers(verdict& result, const std::string& name, const Query& query) {
    retry_departure(result, [&](verdict& attempt) {
        tracked<Object> first{query()};
        const tracked<Object> second{query()};
        if (first.get() == nullptr || second.get() == nullptr) {
            return;
        }
        const std::string before = describe(second.get());
        first.release();
        expect_alive(attempt, name, second, before);
    });
}

void check_two_objects(const video_service& service, verdict& result) {
    check_two_answers<OruSystem>(result, "system", [] { return oru_system_new(nullptr); });
    check_two_answers<OruMode>(result, "mode", [] { return oru_mode_new(nullptr); });
    check_two_answers<OruOutput>(result, "output", [] { return oru_output_new(0, nullptr); });
    for (const std::uint32_t number : service.input_numbers) {
        check_two_answers<OruInput>(result, std::format("input {}", number),
                                    [&] { return oru_input_new(number, nullptr); });
    }
}

void check_two_maps(const video_service& service, verdict& result) {
    for (const map_source& source : service.maps) {
        check_two_answers<OruMap>(result, source.name, source.query);
    }
}

template <class Object>
void check_two_lists_of(verdict& result, GList* (*query)(GError**)) {
    retry_departure(result, [&](verdict& attempt) {
        tracked_list first = track(query(nullptr));
        GList* second = query(nullptr);
        if (first == nullptr || second == nullptr) {
            release_object_list()(second);
            return;
        }
        if (first.get() == second) {
            attempt.depart("both are the same list");
            return;
        }
        const tracked_list second_owner = track(second);
        const std::vector<std::string> before = describe_all(elements_of<Object>(second));
        first.reset();
        const GList* link = second;
        for (const std::string& description : before) {
            if (link->data == nullptr) {
                attempt.depart("gone, which was: " + description);
            } else {
                const std::string after = describe(object_in<Object>(link));
                attempt.expect(after == description, "{}; before: {}", after, description);
            }
            link = link->next;
        }
    });
}

void check_two_lists(const video_service&, verdict& result) {
    check_two_lists_of<OruStream>(result, oru_stream_get_all);
    check_two_lists_of<OruChannel>(result, oru_channel_get_all);
}

// An element with a reference of the caller's own survives the release of its list.
template <class Object>
void check_elements_without_list(verdict& result, GList* (*query)(GError**)) {
    retry_departure(result, [&](verdict& attempt) {
        tracked_list list = track(query(nullptr));
        const std::vector<tracked<Object>> elements = elements_of<Object>(list.get());
        const std::vector<std::string> before = describe_all(elements);
        list.reset();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            expect_alive(attempt, std::format("element {}", i + 1), elements[i], before[i]);
        }
    });
}

void check_streams_without_list(const video_service&, verdict& result) {
    check_elements_without_list<OruStream>(result, oru_stream_get_all);
}

void check_channels_without_list(const video_service&, verdict& result) {
    check_elements_without_list<OruChannel>(result, oru_channel_get_all);
}

constexpr check object_table[] = {
    {"oru_stream_get_id", check_stream_ids},
    {"oru_channel_get_id", check_channel_ids},
    {"an input that does not exist", check_absent_input},
    {"one of two objects released", check_two_objects},
    {"one of two maps released", check_two_maps},
    {"one of two lists released", check_two_lists},
    {"a stream held without its list", check_streams_without_list},
    {"a channel held without its list", check_channels_without_list},
};

}  // namespace

std::span<const check> object_checks() {
    return object_table;
}

}  // namespace probe
