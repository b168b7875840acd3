#include <algorithm>

#include "replay/object.h"

ORU_DEFINE_TYPE(OruChannel, oru_channel, replay::held<snapshot::channel_record>)

namespace {

// Whether the channel's properties hold every string entry of the filter with the same text.
bool matches(const snapshot::channel_record& channel, const qw::map& filter) {
    return std::ranges::all_of(filter, [&](const qw::map::entry& wanted) {
        const auto text = wanted.value.get_if<std::string_view>();
        if (!text) {
            return true;
        }
        return snapshot::has_text(channel.properties, wanted.key, *text);
    });
}

// Whether the filter asks for the channels of inputs, whose list may be recorded by itself.
bool asks_for_inputs(const qw::map& filter) {
    const qw::value* key = filter.find("key");
    return key != nullptr && key->get_if<std::string_view>() == "input";
}

// Lists the recorded channels that match the filter, or all of them when it is NULL.
GList* matching(const std::shared_ptr<const snapshot::answers>& doc,
                const snapshot::answer<std::vector<snapshot::channel_record>>& channels,
                const qw::map* filter, GError** error) {
    const auto* all = replay::recorded(channels, {"channels"}, error);
    GList* list = nullptr;
    for (std::size_t i = all != nullptr ? all->size() : 0; i-- > 0;) {
        const auto& channel = (*all)[i];
        if (filter == nullptr || matches(channel, *filter)) {
            list = g_list_prepend(list,
                                  replay::new_object<OruChannel>(ORU_TYPE_CHANNEL, doc, channel));
        }
    }
    return list;
}

snapshot::query about(OruChannel* channel, const char* part) {
    return {"channel", channel->held->id, part};
}

}  // namespace

GList* oru_channel_get_all(GError** error) {
    const auto doc = replay::reach(error);
    return doc != nullptr ? matching(doc, doc->channels, nullptr, error) : nullptr;
}

GList* oru_channel_get_filtered(OruMap* filter, GError** error) {
    const auto doc = replay::reach(error);
    if (doc == nullptr) {
        return nullptr;
    }
    if (const auto* fails = std::get_if<snapshot::failure>(&doc->channels_filtered);
        fails != nullptr) {
        return replay::failed(*fails, error);
    }
    const qw::map* wanted = oru_map_native_ref(filter);
    if (!std::holds_alternative<snapshot::left_out>(doc->channels_filtered) &&
        asks_for_inputs(*wanted)) {
        return matching(doc, doc->channels_filtered, nullptr, error);
    }
    return matching(doc, doc->channels, wanted, error);
}

guint32 oru_channel_get_id(OruChannel* channel) {
    return channel->held->id;
}

OruMap* oru_channel_get_info(OruChannel* channel, GError** error) {
    if (channel != nullptr) {
        return replay::new_map(channel->held->info, channel->held, about(channel, "info"), error);
    }
    const auto doc = replay::reach(error);
    return doc != nullptr ? replay::new_map(doc->channel_info, doc, {"channel", {}, "info"}, error)
                          : nullptr;
}

OruResolutionSet* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error) {
    snapshot::query asked = about(channel, "resolutions");
    asked.name = oru_map_get_string(filter, "select", nullptr, "");
    const auto* items = replay::recorded_name(channel->held->resolutions, asked, error);
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
    return replay::fill(replay::recorded(channel->held->crop, about(channel, "crop"), error), x, y,
                        width, height);
}

gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error) {
    return replay::fill(
        replay::recorded(channel->held->crop_max, about(channel, "crop_max"), error), width,
        height);
}
