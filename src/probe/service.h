// The running service as the checks of `probe` find it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <oru.h>

#include "probe/living.h"
#include "video/owned.h"

// Something of the service's with the words that a person knows it by: "stream 3".
template <class Object>
struct named {
    std::string name;
    living<Object> is;
};

// A map that can be asked for again and again: "stream 3 info".
struct map_source {
    std::string name;
    std::function<living<OruMap>()> ask;  // gives none when there is no answer
};

// The number of an input that does not exist.
inline constexpr std::uint32_t no_input = 0xFFFFFFFF;

class probed_service {
    // Lists outlive their elements below, for a library may count on it: whether it does is the
    // business of a check.
    living_list stream_list_;
    living_list channel_list_;

  public:
    // Of each kind so many are looked at: a service that does well with these does with more.
    static constexpr std::size_t most = 16;

    // Asks for everything that there is.
    probed_service();

    living<OruSystem> system;
    living<OruMode> mode;
    living<OruOutput> output;
    std::vector<named<OruStream>> streams;
    std::vector<named<OruChannel>> channels;
    std::set<std::uint32_t> input_numbers;  // counted or named by a channel, whether there or not
    std::vector<named<OruInput>> inputs;

    std::vector<map_source> maps;
    // The same, and one that is the probe's own: texts alone, set in no order.
    std::vector<map_source> every_map;

  private:
    void find_inputs();
    void list_maps();
};

// Returns a map with this text alone, or NULL when there is no new map to be had.
owned_object<OruMap> map_with(const char* key, const char* text);

// Returns the list's elements, so many at most, each with a reference of its own.
template <class Object>
std::vector<living<Object>> elements_of(const GList* list) {
    std::vector<living<Object>> elements;
    for (; list != nullptr && elements.size() < probed_service::most; list = list->next) {
        if (list->data != nullptr) {
            elements.emplace_back(static_cast<Object*>(g_object_ref(list->data)));
        }
    }
    return elements;
}
