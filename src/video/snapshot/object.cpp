#include "object.h"

#include "snapshot.h"

G_DEFINE_QUARK(oru - error - quark, oru_error)

namespace oru {

std::nullptr_t not_recorded(const question& asked, GError** error) {
    if (!error) {
        return nullptr;  // whoever asks for many objects that are not there need not wait for texts
    }
    char number[16] = "";
    if (asked.number) {
        g_snprintf(number, sizeof number, " %u", *asked.number);
    }
    g_set_error(error, ORU_ERROR, ORU_ERROR_NO_ANSWER, "%s%s%s%s%s%s%s not recorded", asked.subject,
                number, asked.part ? (asked.number ? ": " : " ") : "", asked.part ? asked.part : "",
                asked.name ? " '" : "", asked.name ? asked.name : "", asked.name ? "'" : "");
    return nullptr;
}

std::nullptr_t failed(const failure& fails, GError** error) {
    g_set_error_literal(error, ORU_ERROR, ORU_ERROR_FAILED, fails.message);
    return nullptr;
}

std::shared_ptr<const document> reach(GError** error) {
    const snapshot& now = current();
    if (!now) {
        g_set_error_literal(error, ORU_ERROR, ORU_ERROR_UNREACHABLE, now.error().c_str());
        return nullptr;
    }
    return *now;
}

OruMap* new_map(const answer<map_entries>& is, std::shared_ptr<const void> owner,
                const question& asked, GError** error) {
    const auto* entries = recorded(is, asked, error);
    return entries ? new_map(qw::map(entries->data(), entries->size(), std::move(owner))) : nullptr;
}

}  // namespace oru
