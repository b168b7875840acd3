// The client interface of the device's video service: what a program asks it, and who owns what
// comes back. Everything is called from one thread.
//
// Unless a comment says otherwise: objects and maps that a function returns are owned by the caller
// and released with g_object_unref(); object, map and key arguments must not be NULL; a `GError**`
// may be NULL, and on failure, and only then, the GError it points to is set (release it with
// g_error_free()).
#ifndef ORU_H
#define ORU_H

#include <glib-object.h>

#ifdef __cplusplus
namespace qw {
class map;
}
extern "C" {
#endif

// --- Errors -------------------------------------------------------------------------------------

#define ORU_ERROR (oru_error_quark())
GQuark oru_error_quark(void);

typedef enum {
    ORU_ERROR_UNREACHABLE,  // the service cannot be reached: every operation fails alike
    ORU_ERROR_NO_ANSWER,    // the service has no answer to this question
    ORU_ERROR_FAILED,       // the service answered with a failure of its own
} OruError;

// --- Types --------------------------------------------------------------------------------------

#define ORU_TYPE_MAP (oru_map_get_type())
G_DECLARE_FINAL_TYPE(OruMap, oru_map, ORU, MAP, GObject)
#define ORU_TYPE_STREAM (oru_stream_get_type())
G_DECLARE_FINAL_TYPE(OruStream, oru_stream, ORU, STREAM, GObject)
#define ORU_TYPE_CHANNEL (oru_channel_get_type())
G_DECLARE_FINAL_TYPE(OruChannel, oru_channel, ORU, CHANNEL, GObject)
#define ORU_TYPE_INPUT (oru_input_get_type())
G_DECLARE_FINAL_TYPE(OruInput, oru_input, ORU, INPUT, GObject)
#define ORU_TYPE_OUTPUT (oru_output_get_type())
G_DECLARE_FINAL_TYPE(OruOutput, oru_output, ORU, OUTPUT, GObject)
#define ORU_TYPE_SYSTEM (oru_system_get_type())
G_DECLARE_FINAL_TYPE(OruSystem, oru_system, ORU, SYSTEM, GObject)
#define ORU_TYPE_MODE (oru_mode_get_type())
G_DECLARE_FINAL_TYPE(OruMode, oru_mode, ORU, MODE, GObject)

// A number of the service's enumeration of video formats, whose members the service defines.
typedef guint32 OruFormat;

// The GEnum type of that enumeration: a value's nick is the format's short lower-case name. The
// codes are 32-bit unsigned; a GEnumValue holds the same 32 bits as a gint.
#define ORU_TYPE_FORMAT (oru_format_get_type())
GType oru_format_get_type(void);

// A width and a height in pixels.
typedef struct {
    guint32 width;
    guint32 height;
} OruResolution;

// A block that begins with a count and goes on with that many resolutions.
typedef struct {
    guint64 count;
} OruResolutionSet;

// Returns the first of `set->count` resolutions. They live as long as the set.
static inline const OruResolution* oru_resolution_set_items(const OruResolutionSet* set) {
    return (const OruResolution*)(set + 1);
}

// --- OruMap: a dictionary of typed values -------------------------------------------------------
//
// The typed getters return the value under `key` when it is of the getter's own kind, or of an
// unsigned kind that widens into it without loss (16 bits into 32; 16 and 32 bits into 64-bit
// signed and into double), and `def` otherwise.

// Returns a new empty map, never NULL.
OruMap* oru_map_new(void);

// Stores a copy of `value`, which must not be NULL, in place of what was under `key`.
void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value);
guint32 oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def);
gint64 oru_map_get_int64(OruMap* map, const gchar* key, gint64 def);
gdouble oru_map_get_double(OruMap* map, const gchar* key, gdouble def);
gboolean oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def);

// The string is owned by the map and lives until the map changes or is released; `def` is returned
// as it is and may be NULL. `length`, unless NULL, receives the text's length in bytes (0 for
// NULL).
const gchar* oru_map_get_string(OruMap* map, const gchar* key, gsize* length, const gchar* def);

// A pair of 32-bit values in one 64-bit value, the pair's first in the low half.
guint64 oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def);

// Returns TRUE when there is a value of any kind under `key`.
gboolean oru_map_contains(OruMap* map, const gchar* key);

// These take out the entry under `key`, or every entry whose key starts with `prefix`, if there is
// any.
void oru_map_remove(OruMap* map, const gchar* key);
void oru_map_remove_prefix(OruMap* map, const gchar* prefix);

// Returns a new map of the entries whose keys start with `prefix`, their keys whole.
OruMap* oru_map_filter_prefix(OruMap* map, const gchar* prefix);

// Returns TRUE when the map holds no key.
gboolean oru_map_empty(OruMap* map);

#ifdef __cplusplus
// Returns the map's native form, which belongs to the map and is never NULL.
const qw::map* oru_map_native_ref(OruMap* map);
#endif

// --- Streams ------------------------------------------------------------------------------------

// Returns a list of owned OruStream, released with g_list_free_full(list, g_object_unref). NULL is
// an empty list when no error is set.
GList* oru_stream_get_all(GError** error);
// Returns the number by which the service knows the stream; 0 is a stream that has none yet.
guint32 oru_stream_get_id(OruStream* stream);
// Each of these returns NULL on failure.
OruMap* oru_stream_get_info(OruStream* stream, GError** error);
OruMap* oru_stream_get_settings(OruStream* stream, GError** error);
// With a NULL stream: the counters of the whole service.
OruMap* oru_stream_get_debug(OruStream* stream, GError** error);
OruMap* oru_stream_get_quota(GError** error);
OruMap* oru_stream_get_limit(GError** error);

// --- Channels -----------------------------------------------------------------------------------

// Lists of owned OruChannel; ownership and NULL as for oru_stream_get_all().
GList* oru_channel_get_all(GError** error);
// The channels whose properties hold every string entry of `filter` with the same text.
GList* oru_channel_get_filtered(OruMap* filter, GError** error);
// Returns the number by which the service knows the channel, from 0 on.
guint32 oru_channel_get_id(OruChannel* channel);
// With a NULL channel: what is common to all channels. NULL on failure.
OruMap* oru_channel_get_info(OruChannel* channel, GError** error);
// Returns the resolutions that the filter's "select" entry names, released with g_free(), or NULL
// on failure; a filter without that entry names none.
OruResolutionSet* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error);
// These return FALSE on failure and then leave the out-values as they were. Pixels.
gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error);
gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error);

// --- Inputs, outputs, system, mode --------------------------------------------------------------

// Each of the functions that return a pointer returns NULL on failure. Inputs are numbered from 1,
// outputs from 0.
OruInput* oru_input_new(guint32 number, GError** error);
OruMap* oru_input_get_info(OruInput* input, GError** error);
// These return FALSE on failure and then leave the out-values as they were. Pixels. `mode` names
// one of the input's modes, for instance "capture".
gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error);
gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error);

OruOutput* oru_output_new(guint32 number, GError** error);
OruMap* oru_output_get_info(OruOutput* output, GError** error);
OruMap* oru_output_get_settings(OruOutput* output, GError** error);

OruSystem* oru_system_new(GError** error);
OruMap* oru_system_get_caps(OruSystem* system, GError** error);

OruMode* oru_mode_new(GError** error);
OruMap* oru_mode_get_info(OruMode* mode, GError** error);

#ifdef __cplusplus
}
#endif

#endif
