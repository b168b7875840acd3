#include "replay/object.h"

#include <string>

#include "replay/snapshot.h"

G_DEFINE_QUARK(oru - error - quark, oru_error)

namespace oru {

std::nullptr_t not_recorded(const question& asked, GError** error) {
    if (error == nullptr) {
        return nullptr;  // whoever asks for many objects that are not there need not wait for texts
    }
    std::string what = asked.subject;
    if (asked.number) {
        what += ' ' + std::to_string(*asked.number);
    }
    if (asked.part != nullptr) {
        what.append(asked.number ? ": " : " ").append(asked.part);
    }
    if (asked.name != nullptr) {
        what.append(" '").append(asked.name).append("'");
    }
    g_set_error(error, ORU_ERROR, ORU_ERROR_NO_ANSWER, "%s not recorded", what.c_str());
    return nullptr;
}

std::nullptr_t failed(const failure& fails, GError** error) {
    g_set_error_literal(error, ORU_ERROR, ORU_ERROR_FAILED, fails.message);
    return nullptr;
}

std::shared_ptr<const document> reach(GError** error) {
    const snapshot& now = current();
    if (!now.has_value()) {
        g_set_error_literal(error, ORU_ERROR, ORU_ERROR_UNREACHABLE, now.error().c_str());
        return nullptr;
    }
    return *now;
}

OruMap* new_map(const answer<map_entries>& is, std::shared_ptr<const void> owner,
                const question& asked, GError** error) {
    const auto* entries = recorded(is, asked, error);
    return entries != nullptr ? new_map(qw::map(entries->data(), entries->size(), std::move(owner)))
                              : nullptr;
}

}  // namespace oru
