#include "video/format_name.h"

#include <memory>

#include <oru.h>

std::string format_to_name(std::uint32_t format) {
    struct release_class {
        void operator()(gpointer type) const noexcept { g_type_class_unref(type); }
    };
    const std::unique_ptr<GEnumClass, release_class> formats{
        static_cast<GEnumClass*>(g_type_class_ref(oru_format_get_type()))};
    const GEnumValue* value = g_enum_get_value(formats.get(), static_cast<gint>(format));
    return value != nullptr ? value->value_nick : "n/a";
}
