#include "video/format_name.h"

#include <oru.h>

#include "video/owned.h"

std::string format_to_name(std::uint32_t format) {
    const owned_class<GEnumClass> formats{
        static_cast<GEnumClass*>(g_type_class_ref(oru_format_get_type()))};
    const GEnumValue* value = g_enum_get_value(formats.get(), static_cast<gint>(format));
    return value != nullptr ? value->value_nick : "n/a";
}
