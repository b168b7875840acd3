#include <algorithm>

#include "replay/object.h"

ORU_DEFINE_TYPE(OruChannel, oru_channel, replay::record_of<snapshot::channel_record>)

namespace {

// Returns whether the channel's properties contain every string entry of the filter.
bool matches(const snapshot::channel_record& channel, const qw::map& filter) {
    return std::ranges::all_of(filter, [&](const qw::map::entry& entry) {
        const auto text = entry.value.get_if<std::string_view>();
        if (!text) {
            return true;
        }
        return snapshot::has_text(channel.properties, entry.key, *text);
    });
}

// Returns whether the filter selects the channels of inputs, of which there may be a list.
bool selects_inputs(const qw::map& filter) {
    const qw::value* key = filter.find("key");
    return key != nullptr && key->get_if<std::string_view>() == "input";
}

// Returns the recorded channels that match the filter, or all if it is NULL.
GList* matching(const std::shared_ptr<const snapshot::answers>& snapshot,
                const snapshot::answer<std::vector<snapshot::channel_record>>& channels,
                const qw::map* filter, GError** error) {
    const auto* all = replay::recorded(channels, {"channels"}, error);
    GList* list = nullptr;
    for (std::size_t i = all != nullptr ? all->size() : 0; i-- > 0;) {
        const auto& channel = (*all)[i];
        if (filter == nullptr || matches(channel, *filter)) {
            list = g_list_prepend(
                list, replay::new_object<OruChannel>(ORU_TYPE_CHANNEL, snapshot, channel));
        }
    }
    return list;
}

snapshot::query query_for(OruChannel* channel, const char* part) {
    return {"channel", channel->content->id, part};
}

}  // namespace

GList* oru_channel_get_all(GError** error) {
    const auto snapshot = replay::reach(error);
    return snapshot != nullptr ? matching(snapshot, snapshot->channels, nullptr, error) : nullptr;
}

GList* oru_channel_get_filtered(OruMap* filter, GError** error) {
    const auto snapshot = replay::reach(error);
    if (snapshot == nullptr) {
        return nullptr;
    }
    if (const auto* failure = std::get_if<snapshot::failure>(&snapshot->channels_filtered);
        failure != nullptr) {
        return replay::failed(*failure, error);
    }
    const qw::map* wanted = oru_map_native_ref(filter);
    if (!std::holds_alternative<snapshot::left_out>(snapshot->channels_filtered) &&
        selects_inputs(*wanted)) {
        return matching(snapshot, snapshot->channels_filtered, nullptr, error);
    }
    return matching(snapshot, snapshot->channels, wanted, error);
}

guint32 oru_channel_get_id(OruChannel* channel) {
    return channel->content->id;
}

OruMap* oru_channel_get_info(OruChannel* channel, GError** error) {
    if (channel != nullptr) {
        return replay::new_map(channel->content->info, channel->content, query_for(channel, "info"),
                               error);
    }
    const auto snapshot = replay::reach(error);
    return snapshot != nullptr
               ? replay::new_map(snapshot->channel_info, snapshot, {"channel", {}, "info"}, error)
               : nullptr;
}

OruResolutionSet* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error) {
    snapshot::query query = query_for(channel, "resolutions");
    query.name = oru_map_get_string(filter, "select", nullptr, "");
    const auto* items = replay::recorded_name(channel->content->resolutions, query, error);
    if (items == nullptr) {
        return nullptr;
    }
    auto* set = static_cast<OruResolutionSet*>(
        g_malloc(sizeof(OruResolutionSet) + items->size() * sizeof(OruResolution)));
    set->count = items->size();
    std::ranges::transform(
        *items, const_cast<OruResolution*>(oru_resolution_set_items(set)),
        [](const snapshot::resolution& size) { return OruResolution{size.width, size.height}; });
    return set;
}

gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error) {
    return replay::fill(replay::recorded(channel->content->crop, query_for(channel, "crop"), error),
                        x, y, width, height);
}

gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error) {
    return replay::fill(
        replay::recorded(channel->content->crop_max, query_for(channel, "crop_max"), error), width,
        height);
}
