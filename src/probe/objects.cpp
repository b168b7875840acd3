// What the service hands out: ids, and how long things live.
#include <cstdint>
#include <format>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/content.h"

namespace {

// --- What an object answers ---------------------------------------------------------------------
//
// Told by its id and by the keys of its maps, which stay as they are while values change.

std::string keys_in(const char* part, OruMap* asked) {
    const owned_object<OruMap> map{asked};
    if (map == nullptr) {
        return std::format(", no {}", part);
    }
    std::string text = std::format(", {} with", part);
    for (const worded_entry& entry : content_of(map.get())) {
        text += std::format(" '{}'", entry.key);
    }
    return text;
}

std::string answers_of(OruStream* stream) {
    return std::format("stream {}", oru_stream_get_id(stream)) +
           keys_in("info", oru_stream_get_info(stream, nullptr)) +
           keys_in("settings", oru_stream_get_settings(stream, nullptr)) +
           keys_in("debug", oru_stream_get_debug(stream, nullptr));
}

std::string answers_of(OruChannel* channel) {
    return std::format("channel {}", oru_channel_get_id(channel)) +
           keys_in("info", oru_channel_get_info(channel, nullptr));
}

std::string answers_of(OruInput* input) {
    return "input" + keys_in("info", oru_input_get_info(input, nullptr));
}

std::string answers_of(OruOutput* output) {
    return "output" + keys_in("info", oru_output_get_info(output, nullptr)) +
           keys_in("settings", oru_output_get_settings(output, nullptr));
}

std::string answers_of(OruSystem* system) {
    return "system" + keys_in("caps", oru_system_get_caps(system, nullptr));
}

std::string answers_of(OruMode* mode) {
    return "mode" + keys_in("info", oru_mode_get_info(mode, nullptr));
}

std::string answers_of(OruMap* map) {
    std::string text = "map";
    for (const auto& [key, value] : content_of(map)) {
        text += std::format(", '{}': {}", key, value);
    }
    return text;
}

template <class Object>
std::vector<std::string> answers_of_all(const std::vector<living<Object>>& all) {
    std::vector<std::string> answers;
    answers.reserve(all.size());
    for (const living<Object>& object : all) {
        answers.push_back(answers_of(object.get()));
    }
    return answers;
}

// Whether the object is still there and answers as it did.
template <class Object>
void expect_alive(verdict& told, const std::string& about, const living<Object>& object,
                  const std::string& before) {
    if (object.get() == nullptr) {
        told.departs(about + ": gone");
        return;
    }
    const std::string after = answers_of(object.get());
    told.expect(after == before, "{}: {}; before: {}", about, after, before);
}

// --- The checks ---------------------------------------------------------------------------------

// An object's id is always the same one. Two have none in common, but that of streams without one.
template <class Object>
void check_ids(const std::vector<named<Object>>& all, guint32 (*id)(Object*),
               std::optional<guint32> shared, verdict& told) {
    std::set<guint32> ids;
    for (const auto& [name, object] : all) {
        if (object.get() == nullptr) {
            continue;
        }
        const guint32 first = id(object.get());
        const guint32 second = id(object.get());
        told.expect(first == second, "{}, and then {}", first, second);
        told.expect(first == shared || ids.insert(first).second, "two have the id {}", first);
    }
}

void stream_ids(const probed_service& service, verdict& told) {
    check_ids(service.streams, oru_stream_get_id, 0, told);
}

void channel_ids(const probed_service& service, verdict& told) {
    check_ids(service.channels, oru_channel_get_id, std::nullopt, told);
}

// A service that does have an input of that number has none of the one before.
void no_such_input(const probed_service&, verdict& told) {
    for (const std::uint32_t number : {no_input, no_input - 1}) {
        if (const living<OruInput> input{oru_input_new(number, nullptr)}; input.get() == nullptr) {
            told.is_right();
            return;
        }
    }
    told.departs(std::format("there are the inputs {} and {}", no_input, no_input - 1));
}

// Of two answers, one is given back.
template <class Object, class Ask>
void check_two(verdict& told, const std::string& name, const Ask& ask) {
    try_again(told, [&](verdict& now) {
        living<Object> one{ask()};
        const living<Object> other{ask()};
        if (one.get() == nullptr || other.get() == nullptr) {
            return;
        }
        const std::string before = answers_of(other.get());
        one.release();
        expect_alive(now, name, other, before);
    });
}

void two_objects(const probed_service& service, verdict& told) {
    check_two<OruSystem>(told, "system", [] { return oru_system_new(nullptr); });
    check_two<OruMode>(told, "mode", [] { return oru_mode_new(nullptr); });
    check_two<OruOutput>(told, "output", [] { return oru_output_new(0, nullptr); });
    for (const std::uint32_t number : service.input_numbers) {
        check_two<OruInput>(told, std::format("input {}", number),
                            [&] { return oru_input_new(number, nullptr); });
    }
}

void two_maps(const probed_service& service, verdict& told) {
    for (const map_source& source : service.maps) {
        check_two<OruMap>(told, source.name, source.ask);
    }
}

template <class Object>
void check_two_lists(verdict& told, GList* (*ask)(GError**)) {
    try_again(told, [&](verdict& now) {
        living_list one = watch(ask(nullptr));
        GList* second = ask(nullptr);
        if (one == nullptr || second == nullptr) {
            release_object_list()(second);
            return;
        }
        if (one.get() == second) {
            now.departs("both are one list");
            return;
        }
        const living_list other = watch(second);
        const std::vector<std::string> before = answers_of_all(elements_of<Object>(other.get()));
        one.reset();
        std::size_t at = 0;
        for (GList* link = other.get(); link != nullptr && at < before.size(); link = link->next) {
            if (link->data == nullptr) {
                now.departs("gone, which was: " + before[at++]);
                continue;
            }
            const std::string after = answers_of(object_in<Object>(link));
            now.expect(after == before[at], "{}; before: {}", after, before[at]);
            ++at;
        }
    });
}

void two_lists(const probed_service&, verdict& told) {
    check_two_lists<OruStream>(told, oru_stream_get_all);
    check_two_lists<OruChannel>(told, oru_channel_get_all);
}

// An element of a list that is given back is held on to.
template <class Object>
void check_held(verdict& told, GList* (*ask)(GError**)) {
    try_again(told, [&](verdict& now) {
        living_list list = watch(ask(nullptr));
        std::vector<living<Object>> held = elements_of<Object>(list.get());
        const std::vector<std::string> before = answers_of_all(held);
        list.reset();
        for (std::size_t i = 0; i < held.size(); ++i) {
            expect_alive(now, std::format("element {}", i + 1), held[i], before[i]);
        }
    });
}

void held_streams(const probed_service&, verdict& told) {
    check_held<OruStream>(told, oru_stream_get_all);
}

void held_channels(const probed_service&, verdict& told) {
    check_held<OruChannel>(told, oru_channel_get_all);
}

constexpr probe_check checks[] = {
    {"oru_stream_get_id", stream_ids},
    {"oru_channel_get_id", channel_ids},
    {"an input that does not exist", no_such_input},
    {"one of two objects released", two_objects},
    {"one of two maps released", two_maps},
    {"one of two lists released", two_lists},
    {"a stream held without its list", held_streams},
    {"a channel held without its list", held_channels},
};

}  // namespace

std::span<const probe_check> object_checks() {
    return checks;
}
