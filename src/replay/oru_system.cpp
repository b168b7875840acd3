#include "replay/object.h"

ORU_DEFINE_TYPE(OruSystem, oru_system, replay::held<snapshot::system_record>)
ORU_DEFINE_TYPE(OruMode, oru_mode, replay::held<snapshot::mode_record>)

OruSystem* oru_system_new(GError** error) {
    const auto doc = replay::reach(error);
    const auto* system =
        doc != nullptr ? replay::recorded(doc->system, {"system"}, error) : nullptr;
    return system != nullptr ? replay::new_object<OruSystem>(ORU_TYPE_SYSTEM, doc, *system)
                             : nullptr;
}

OruMap* oru_system_get_caps(OruSystem* system, GError** error) {
    return replay::new_map(system->held->caps, system->held, {"system", {}, "caps"}, error);
}

OruMode* oru_mode_new(GError** error) {
    const auto doc = replay::reach(error);
    const auto* mode = doc != nullptr ? replay::recorded(doc->mode, {"mode"}, error) : nullptr;
    return mode != nullptr ? replay::new_object<OruMode>(ORU_TYPE_MODE, doc, *mode) : nullptr;
}

OruMap* oru_mode_get_info(OruMode* mode, GError** error) {
    return replay::new_map(mode->held->info, mode->held, {"mode", {}, "info"}, error);
}
