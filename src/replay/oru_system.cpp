#include "replay/object.h"

ORU_DEFINE_TYPE(OruSystem, oru_system, replay::record_of<snapshot::system_record>)
ORU_DEFINE_TYPE(OruMode, oru_mode, replay::record_of<snapshot::mode_record>)

OruSystem* oru_system_new(GError** error) {
    const auto snapshot = replay::reach(error);
    const auto* system =
        snapshot != nullptr ? replay::recorded(snapshot->system, {"system"}, error) : nullptr;
    return system != nullptr ? replay::new_object<OruSystem>(ORU_TYPE_SYSTEM, snapshot, *system)
                             : nullptr;
}

OruMap* oru_system_get_caps(OruSystem* system, GError** error) {
    return replay::new_map(system->content->caps, system->content, {"system", {}, "caps"}, error);
}

OruMode* oru_mode_new(GError** error) {
    const auto snapshot = replay::reach(error);
    const auto* mode =
        snapshot != nullptr ? replay::recorded(snapshot->mode, {"mode"}, error) : nullptr;
    return mode != nullptr ? replay::new_object<OruMode>(ORU_TYPE_MODE, snapshot, *mode) : nullptr;
}

OruMap* oru_mode_get_info(OruMode* mode, GError** error) {
    return replay::new_map(mode->content->info, mode->content, {"mode", {}, "info"}, error);
}
