// The client interface of the video service as a device's own library may declare it, without the
// additions of our library. It has no cast macros, no layouts, and only the formats' type function.
// The formats are a C enumeration, and the type of the resolutions has no members. The tools must
// compile with these declarations alone.
//
// Ownership, NULL and errors are as in src/video/oru.h.
#pragma once

#include <glib-object.h>

#ifdef __cplusplus
namespace qw {
class map;
}
extern "C" {
#endif

typedef struct _OruMap OruMap;
typedef struct _OruStream OruStream;
typedef struct _OruChannel OruChannel;
typedef struct _OruInput OruInput;
typedef struct _OruOutput OruOutput;
typedef struct _OruSystem OruSystem;
typedef struct _OruMode OruMode;
typedef struct _OruResolutions OruResolutions;

// The formats that every service has. A service's enumeration may have more, and other codes.
typedef enum {
    ORU_FORMAT_H264,
    ORU_FORMAT_H265,
    ORU_FORMAT_JPEG,
    ORU_FORMAT_RAW,
} OruFormat;

GType oru_format_get_type(void);

OruMap* oru_map_new(void);
void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value);
guint32 oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def);
gint64 oru_map_get_int64(OruMap* map, const gchar* key, gint64 def);
gdouble oru_map_get_double(OruMap* map, const gchar* key, gdouble def);
gboolean oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def);
// `reserved` must be NULL.
const gchar* oru_map_get_string(OruMap* map, const gchar* key, gpointer reserved, const gchar* def);
guint64 oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def);
gboolean oru_map_contains(OruMap* map, const gchar* key);
void oru_map_remove(OruMap* map, const gchar* key);
void oru_map_remove_prefix(OruMap* map, const gchar* prefix);
OruMap* oru_map_filter_prefix(OruMap* map, const gchar* prefix);
gboolean oru_map_empty(OruMap* map);
#ifdef __cplusplus
qw::map* oru_map_native_ref(OruMap* map);
#endif

GList* oru_stream_get_all(GError** error);
guint32 oru_stream_get_id(OruStream* stream);
OruMap* oru_stream_get_info(OruStream* stream, GError** error);
OruMap* oru_stream_get_settings(OruStream* stream, GError** error);
OruMap* oru_stream_get_debug(OruStream* stream, GError** error);
OruMap* oru_stream_get_quota(GError** error);
OruMap* oru_stream_get_limit(GError** error);

GList* oru_channel_get_all(GError** error);
GList* oru_channel_get_filtered(OruMap* filter, GError** error);
guint32 oru_channel_get_id(OruChannel* channel);
OruMap* oru_channel_get_info(OruChannel* channel, GError** error);
OruResolutions* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error);
gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error);
gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error);

OruInput* oru_input_new(guint32 number, GError** error);
OruMap* oru_input_get_info(OruInput* input, GError** error);
gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error);
gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error);

// NULL names the first output.
OruOutput* oru_output_new(const gchar* name, GError** error);
OruMap* oru_output_get_info(OruOutput* output, GError** error);
OruMap* oru_output_get_settings(OruOutput* output, GError** error);

OruSystem* oru_system_new(GError** error);
OruMap* oru_system_get_caps(OruSystem* system, GError** error);

OruMode* oru_mode_new(GError** error);
OruMap* oru_mode_get_info(OruMode* mode, GError** error);

#ifdef __cplusplus
}
#endif
