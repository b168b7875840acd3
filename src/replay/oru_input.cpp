#include "replay/object.h"

ORU_DEFINE_TYPE(OruInput, oru_input, replay::held<snapshot::input_record>)

namespace {

snapshot::query about(OruInput* input, const char* part) {
    return {"input", input->held->id, part};
}

}  // namespace

OruInput* oru_input_new(guint32 number, GError** error) {
    return replay::find_object<OruInput>(ORU_TYPE_INPUT, &snapshot::records::inputs, "input",
                                         number, error);
}

OruMap* oru_input_get_info(OruInput* input, GError** error) {
    return replay::new_map(input->held->info, input->held, about(input, "info"), error);
}

gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error) {
    return replay::fill(replay::recorded(input->held->crop, about(input, "crop"), error), x, y,
                        width, height);
}

gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error) {
    snapshot::query asked = about(input, "resolution_unrotated");
    asked.name = mode;
    return replay::fill(replay::recorded_name(input->held->resolution_unrotated, asked, error),
                        width, height);
}
