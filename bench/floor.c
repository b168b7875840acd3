// The smallest program of the tools' kind: it parses its options with GOption, creates and releases
// one object of the base type of the client interface, and prints as many bytes as one of the tools
// printed. The difference to it is the tools' own work.

#include <glib-object.h>

int main(int argc, char** argv) {
    gint bytes = 0;
    const GOptionEntry options[] = {
        {"bytes", 'b', 0, G_OPTION_ARG_INT, &bytes, "How many bytes to print", "COUNT"},
        {0},
    };
    GOptionContext* context = g_option_context_new(NULL);
    g_option_context_add_main_entries(context, options, NULL);
    GError* error = NULL;
    if (!g_option_context_parse(context, &argc, &argv, &error)) {
        g_printerr("floor: %s\n", error->message);
        return 1;
    }
    g_object_unref(g_object_new(G_TYPE_OBJECT, NULL));
    if (bytes > 0) {
        gchar* text = g_strnfill((gsize)bytes, '.');
        text[bytes - 1] = '\n';
        g_print("%s", text);
        g_free(text);
    }
    g_option_context_free(context);
    return 0;
}
