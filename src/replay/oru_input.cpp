#include "replay/object.h"

ORU_DEFINE_TYPE(OruInput, oru_input, replay::record_of<snapshot::input_record>)

namespace {

snapshot::query query_for(OruInput* input, const char* part) {
    return {"input", input->content->id, part};
}

}  // namespace

OruInput* oru_input_new(guint32 number, GError** error) {
    return replay::find_object<OruInput>(ORU_TYPE_INPUT, &snapshot::records::inputs, "input",
                                         number, error);
}

OruMap* oru_input_get_info(OruInput* input, GError** error) {
    return replay::new_map(input->content->info, input->content, query_for(input, "info"), error);
}

gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error) {
    return replay::fill(replay::recorded(input->content->crop, query_for(input, "crop"), error), x,
                        y, width, height);
}

gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error) {
    snapshot::query query = query_for(input, "resolution_unrotated");
    query.name = mode;
    return replay::fill(replay::recorded_name(input->content->resolution_unrotated, query, error),
                        width, height);
}
