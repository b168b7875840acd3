// The objects and maps of the running video service, which the checks use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <oru.h>

#include "probe/tracked.h"
#include "video/owned.h"

namespace probe {

template <class Object>
struct named_object {
    std::string name;  // for messages: "stream 3"
    tracked<Object> object;
};

// A query for a map, which may be repeated.
struct map_source {
    std::string name;                        // for messages: "stream 3 info"
    std::function<tracked<OruMap>()> query;  // returns no map if the query fails
};

// The number of an input that does not exist.
inline constexpr std::uint32_t absent_input = 0xFFFFFFFF;

class video_service {
    // These must outlive the elements below: some libraries may rely on it. A check finds out
    // whether this one does.
    tracked_list stream_list_;
    tracked_list channel_list_;

  public:
    // Queries everything.
    video_service();

    tracked<OruSystem> system;
    tracked<OruMode> mode;
    tracked<OruOutput> output;
    std::vector<named_object<OruStream>> streams;
    std::vector<named_object<OruChannel>> channels;
    std::set<std::uint32_t> input_numbers;  // counted, or named by a channel; may be absent
    std::vector<named_object<OruInput>> inputs;

    std::vector<map_source> maps;
    // Also a map that the probe creates: texts only, set in no order.
    std::vector<map_source> maps_and_new_map;

  private:
    void find_inputs();
    void list_maps();
};

// Returns a map with this text as its only entry, or NULL if the library cannot create a map.
owned_object<OruMap> map_with(const char* key, const char* text);

// Returns the elements of the list, each with its own reference.
template <class Object>
std::vector<tracked<Object>> elements_of(const GList* list) {
    std::vector<tracked<Object>> elements;
    for (; list != nullptr; list = list->next) {
        if (list->data != nullptr) {
            elements.emplace_back(static_cast<Object*>(g_object_ref(list->data)));
        }
    }
    return elements;
}

}  // namespace probe
