#include "support/live_objects.h"

#include <stdio.h>

#include <glib-object.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

/* The set of all live objects. */
static GHashTable* alive;

static void forget(gpointer data, GObject* object) {
    (void)data;
    g_hash_table_remove(alive, object);
}

static void write_counts(void) {
    FILE* file = fopen(getenv("ORU_TEST_LIVE_OBJECTS"), "w");
    if (file == NULL) {
        abort();
    }
    GHashTable* counts = g_hash_table_new(g_str_hash, g_str_equal);
    GHashTableIter iter;
    gpointer object;
    g_hash_table_iter_init(&iter, alive);
    while (g_hash_table_iter_next(&iter, &object, NULL)) {
        gpointer name = (gpointer)G_OBJECT_TYPE_NAME(object);
        gsize count = GPOINTER_TO_SIZE(g_hash_table_lookup(counts, name));
        g_hash_table_insert(counts, name, GSIZE_TO_POINTER(count + 1));
    }
    gpointer name;
    gpointer count;
    g_hash_table_iter_init(&iter, counts);
    while (g_hash_table_iter_next(&iter, &name, &count)) {
        fprintf(file, "%s %zu\n", (const char*)name, GPOINTER_TO_SIZE(count));
    }
    g_hash_table_unref(counts);
    if (fclose(file) != 0) {
        abort();
    }
}

/* Runs before main, so that a run that creates no object writes its file too, and so that the table
   does not count as memory of the program. */
__attribute__((constructor)) static void start(void) {
    alive = g_hash_table_new(NULL, NULL);
    if (getenv("ORU_TEST_LIVE_OBJECTS") != NULL) {
        atexit(write_counts);
    }
}

gpointer g_object_new(GType type, const gchar* first_property_name, ...) {
    va_list properties;
    va_start(properties, first_property_name);
    GObject* object = g_object_new_valist(type, first_property_name, properties);
    va_end(properties);
    g_object_weak_ref(object, forget, NULL);
    g_hash_table_add(alive, object);
    return object;
}

unsigned live_objects(const char* type_name) {
    unsigned count = 0;
    GHashTableIter iter;
    gpointer object;
    g_hash_table_iter_init(&iter, alive);
    while (g_hash_table_iter_next(&iter, &object, NULL)) {
        if (type_name == NULL || strcmp(G_OBJECT_TYPE_NAME(object), type_name) == 0) {
            ++count;
        }
    }
    return count;
}

void release_live_objects(void) {
    guint count = 0;
    gpointer* objects = g_hash_table_get_keys_as_array(alive, &count);
    for (guint i = 0; i < count; ++i) {
        g_object_unref(objects[i]);
    }
    g_free(objects);
}
