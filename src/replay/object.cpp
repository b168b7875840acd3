#include "replay/object.h"

#include "replay/current.h"

G_DEFINE_QUARK(oru - error - quark, oru_error)

namespace replay {

std::nullptr_t not_recorded(const snapshot::query& asked, GError** error) {
    if (error != nullptr) {  // for many objects that do not exist no text is made in vain
        g_set_error_literal(error, ORU_ERROR, ORU_ERROR_NO_ANSWER,
                            snapshot::not_recorded(asked).c_str());
    }
    return nullptr;
}

std::nullptr_t failed(const snapshot::failure& fails, GError** error) {
    g_set_error_literal(error, ORU_ERROR, ORU_ERROR_FAILED, fails.message);
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

OruMap* new_map(const snapshot::answer<snapshot::map_entries>& from,
                std::shared_ptr<const void> owner, const snapshot::query& asked, GError** error) {
    const auto* entries = recorded(from, asked, error);
    return entries != nullptr ? new_map(qw::map(entries->data(), entries->size(), std::move(owner)))
                              : nullptr;
}

}  // namespace replay
