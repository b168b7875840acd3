#include "replay/object.h"

ORU_DEFINE_TYPE(OruStream, oru_stream, replay::held<snapshot::stream_record>)

namespace {

OruMap* map_of(OruStream* stream,
               snapshot::answer<snapshot::map_entries> snapshot::stream_record::* member,
               const char* part, GError** error) {
    const auto& record = stream->held;
    return replay::new_map((*record).*member, record, {"stream", record->id, part}, error);
}

// A map of the whole service.
OruMap* map_of_all(snapshot::answer<snapshot::map_entries> snapshot::records::* member,
                   const char* part, GError** error) {
    const auto doc = replay::reach(error);
    return doc != nullptr ? replay::new_map((*doc).*member, doc, {"stream", {}, part}, error)
                          : nullptr;
}

}  // namespace

GList* oru_stream_get_all(GError** error) {
    const auto doc = replay::reach(error);
    const auto* all = doc != nullptr ? replay::recorded(doc->streams, {"streams"}, error) : nullptr;
    GList* list = nullptr;
    for (std::size_t i = all != nullptr ? all->size() : 0; i-- > 0;) {
        list = g_list_prepend(list, replay::new_object<OruStream>(ORU_TYPE_STREAM, doc, (*all)[i]));
    }
    return list;
}

guint32 oru_stream_get_id(OruStream* stream) {
    return stream->held->id;
}

OruMap* oru_stream_get_info(OruStream* stream, GError** error) {
    return map_of(stream, &snapshot::stream_record::info, "info", error);
}

OruMap* oru_stream_get_settings(OruStream* stream, GError** error) {
    return map_of(stream, &snapshot::stream_record::settings, "settings", error);
}

OruMap* oru_stream_get_debug(OruStream* stream, GError** error) {
    return stream != nullptr ? map_of(stream, &snapshot::stream_record::debug, "debug", error)
                             : map_of_all(&snapshot::records::stream_debug, "debug", error);
}

OruMap* oru_stream_get_quota(GError** error) {
    return map_of_all(&snapshot::records::stream_quota, "quota", error);
}

OruMap* oru_stream_get_limit(GError** error) {
    return map_of_all(&snapshot::records::stream_limit, "limit", error);
}
