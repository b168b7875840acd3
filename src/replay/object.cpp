#include "replay/object.h"

#include "replay/current.h"

G_DEFINE_QUARK(oru - error - quark, oru_error)

namespace replay {

std::nullptr_t not_recorded(const snapshot::query& query, GError** error) {
    if (error != nullptr) {  // saves the text for many objects that do not exist
        g_set_error_literal(error, ORU_ERROR, ORU_ERROR_NO_ANSWER,
                            snapshot::not_recorded(query).c_str());
    }
    return nullptr;
}

std::nullptr_t failed(const snapshot::failure& failure, GError** error) {
    g_set_error_literal(error, ORU_ERROR, ORU_ERROR_FAILED, failure.message);
    return nullptr;
}

std::shared_ptr<const snapshot::answers> reach(GError** error) {
    const snapshot::loaded& loaded = current();
    if (!loaded.has_value()) {
        g_set_error_literal(error, ORU_ERROR, ORU_ERROR_UNREACHABLE, loaded.error().c_str());
        return nullptr;
    }
    return *loaded;
}

OruMap* new_map(const snapshot::answer<snapshot::map_entries>& answer,
                std::shared_ptr<const void> owner, const snapshot::query& query, GError** error) {
    const auto* entries = recorded(answer, query, error);
    return entries != nullptr ? new_map(qw::map(entries->data(), entries->size(), std::move(owner)))
                              : nullptr;
}

}  // namespace replay
