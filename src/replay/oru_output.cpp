#include "replay/object.h"

ORU_DEFINE_TYPE(OruOutput, oru_output, replay::record_of<snapshot::output_record>)

OruOutput* oru_output_new(guint32 number, GError** error) {
    return replay::find_object<OruOutput>(ORU_TYPE_OUTPUT, &snapshot::records::outputs, "output",
                                          number, error);
}

OruMap* oru_output_get_info(OruOutput* output, GError** error) {
    const auto& record = output->content;
    return replay::new_map(record->info, record, {"output", record->id, "info"}, error);
}

OruMap* oru_output_get_settings(OruOutput* output, GError** error) {
    const auto& record = output->content;
    return replay::new_map(record->settings, record, {"output", record->id, "settings"}, error);
}
