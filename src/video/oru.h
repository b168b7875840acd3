// The client interface of the device's video service. All functions must be called from one thread.
//
// Unless a comment says otherwise: the caller owns the objects and maps that a function returns,
// and releases them with g_object_unref(). Object, map and key arguments must not be NULL. A
// `GError**` may be NULL; if it is not, the GError is set if and only if the function fails
// (release it with g_error_free()).
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
    ORU_ERROR_NO_ANSWER,    // the service has no answer to this query
    ORU_ERROR_FAILED,       // the service reported a failure
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

// A number of the service's enumeration of video formats. The service defines its members.
typedef guint32 OruFormat;

// The GEnum type of that enumeration. A value's nick is the format's short lower-case name. The
// codes are 32-bit unsigned; a GEnumValue contains the same 32 bits as a gint.
#define ORU_TYPE_FORMAT (oru_format_get_type())
GType oru_format_get_type(void);

// A width and a height in pixels.
typedef struct {
    guint32 width;
    guint32 height;
} OruResolution;

// A block that begins with a count. That many resolutions follow.
typedef struct {
    guint64 count;
} OruResolutionSet;

// Returns the first of `set->count` resolutions. They are valid as long as the set.
static inline const OruResolution* oru_resolution_set_items(const OruResolutionSet* set) {
    return (const OruResolution*)(set + 1);
}

// --- OruMap: a dictionary of typed values -------------------------------------------------------
//
// The typed getters return the value under `key` if it is of the getter's own kind, or of an
// unsigned kind that converts to it without loss (16 bits to 32; 16 and 32 bits to 64-bit signed
// and to double). Otherwise they return `def`.

// Returns a new empty map, never NULL.
OruMap* oru_map_new(void);

// Stores a copy of `value`, which must not be NULL, under `key` and replaces an existing value.
void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value);
guint32 oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def);
gint64 oru_map_get_int64(OruMap* map, const gchar* key, gint64 def);
gdouble oru_map_get_double(OruMap* map, const gchar* key, gdouble def);
gboolean oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def);

// The map owns the string, which is valid until the map changes or is released. `def` may be NULL.
// `length`, unless NULL, receives the length of the result in bytes (0 for NULL).
const gchar* oru_map_get_string(OruMap* map, const gchar* key, gsize* length, const gchar* def);

// A pair of 32-bit values in one 64-bit value. The low half is the pair's first value.
guint64 oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def);

// Returns TRUE if there is a value of any kind under `key`.
gboolean oru_map_contains(OruMap* map, const gchar* key);

// These remove the entry under `key`, or every entry whose key starts with `prefix`, if there is
// any.
void oru_map_remove(OruMap* map, const gchar* key);
void oru_map_remove_prefix(OruMap* map, const gchar* prefix);

// Returns a new map of the entries whose keys start with `prefix`. The keys stay whole.
OruMap* oru_map_filter_prefix(OruMap* map, const gchar* prefix);

// Returns TRUE if the map contains no key.
gboolean oru_map_empty(OruMap* map);

#ifdef __cplusplus
// Returns the map's native form, which the map owns. Never NULL.
const qw::map* oru_map_native_ref(OruMap* map);
#endif

// --- Streams ------------------------------------------------------------------------------------

// Returns a list of owned OruStream; release it with g_list_free_full(list, g_object_unref). NULL
// is an empty list if no error is set.
GList* oru_stream_get_all(GError** error);
// Returns the service's number of the stream, or 0 if the stream has none yet.
guint32 oru_stream_get_id(OruStream* stream);
// Each of these returns NULL on failure.
OruMap* oru_stream_get_info(OruStream* stream, GError** error);
OruMap* oru_stream_get_settings(OruStream* stream, GError** error);
// If `stream` is NULL, returns the counters of the whole service.
OruMap* oru_stream_get_debug(OruStream* stream, GError** error);
OruMap* oru_stream_get_quota(GError** error);
OruMap* oru_stream_get_limit(GError** error);

// --- Channels -----------------------------------------------------------------------------------

// These return lists of owned OruChannel. Ownership and NULL are as for oru_stream_get_all().
GList* oru_channel_get_all(GError** error);
// Returns the channels whose properties contain every string entry of `filter`.
GList* oru_channel_get_filtered(OruMap* filter, GError** error);
// Returns the service's number of the channel. The first is 0.
guint32 oru_channel_get_id(OruChannel* channel);
// If `channel` is NULL, returns what is common to all channels. Returns NULL on failure.
OruMap* oru_channel_get_info(OruChannel* channel, GError** error);
// Returns the resolutions that the filter's "select" entry names, or NULL on failure. A filter
// without that entry names none. Release the set with g_free().
OruResolutionSet* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error);
// These return FALSE on failure and do not change the out-values then. Pixels.
gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error);
gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error);

// --- Inputs, outputs, system, mode --------------------------------------------------------------

// The functions that return a pointer return NULL on failure. The first input has the number 1, the
// first output 0.
OruInput* oru_input_new(guint32 number, GError** error);
OruMap* oru_input_get_info(OruInput* input, GError** error);
// These return FALSE on failure and do not change the out-values then. Pixels. `mode` is one of the
// input's modes, for example "capture".
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
