#include "replay/object.h"

ORU_DEFINE_TYPE(OruStream, oru_stream, replay::record_of<snapshot::stream_record>)

namespace {

OruMap* stream_map(OruStream* stream,
                   snapshot::answer<snapshot::map_entries> snapshot::stream_record::* member,
                   const char* part, GError** error) {
    const auto& record = stream->content;
    return replay::new_map((*record).*member, record, {"stream", record->id, part}, error);
}

// Returns a map of the whole service.
OruMap* service_map(snapshot::answer<snapshot::map_entries> snapshot::records::* member,
                    const char* part, GError** error) {
    const auto snapshot = replay::reach(error);
    return snapshot != nullptr
               ? replay::new_map((*snapshot).*member, snapshot, {"stream", {}, part}, error)
               : nullptr;
}

}  // namespace

GList* oru_stream_get_all(GError** error) {
    const auto snapshot = replay::reach(error);
    const auto* all =
        snapshot != nullptr ? replay::recorded(snapshot->streams, {"streams"}, error) : nullptr;
    GList* list = nullptr;
    for (std::size_t i = all != nullptr ? all->size() : 0; i-- > 0;) {
        list = g_list_prepend(list,
                              replay::new_object<OruStream>(ORU_TYPE_STREAM, snapshot, (*all)[i]));
    }
    return list;
}

guint32 oru_stream_get_id(OruStream* stream) {
    return stream->content->id;
}

OruMap* oru_stream_get_info(OruStream* stream, GError** error) {
    return stream_map(stream, &snapshot::stream_record::info, "info", error);
}

OruMap* oru_stream_get_settings(OruStream* stream, GError** error) {
    return stream_map(stream, &snapshot::stream_record::settings, "settings", error);
}

OruMap* oru_stream_get_debug(OruStream* stream, GError** error) {
    return stream != nullptr ? stream_map(stream, &snapshot::stream_record::debug, "debug", error)
                             : service_map(&snapshot::records::stream_debug, "debug", error);
}

OruMap* oru_stream_get_quota(GError** error) {
    return service_map(&snapshot::records::stream_quota, "quota", error);
}

OruMap* oru_stream_get_limit(GError** error) {
    return service_map(&snapshot::records::stream_limit, "limit", error);
}
