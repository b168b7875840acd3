// Logs the tools' calls to GLib and the C library that release, print and set up the command line.
// The linker redirects these calls (--wrap), and each function passes its arguments on.
#include <cstdarg>
#include <cstdio>
#include <string>

#include <glib-object.h>

#include "strict_client/calls.h"

extern "C" {

void __real_g_free(gpointer block);
void __real_g_list_free(GList* list);
void __real_g_list_free_full(GList* list, GDestroyNotify release);
void __real_g_error_free(GError* error);
gpointer __real_g_type_class_ref(GType type);
void __real_g_type_class_unref(gpointer type);
void __real_g_print(const gchar* format, ...);
GOptionContext* __real_g_option_context_new(const gchar* parameters);
void __real_g_option_context_free(GOptionContext* context);
void __real_g_option_context_set_summary(GOptionContext* context, const gchar* summary);
void __real_g_option_context_set_description(GOptionContext* context, const gchar* description);
void __real_g_option_context_add_main_entries(GOptionContext* context, const GOptionEntry* entries,
                                              const gchar* domain);
std::size_t __real_fwrite(const void* text, std::size_t size, std::size_t count, std::FILE* file);

void __wrap_g_free(gpointer block) {
    strict::release_block(block);
    __real_g_free(block);
}

void __wrap_g_list_free(GList* list) {
    strict::release_list("g_list_free", list);
    strict::list_is_released("g_list_free", list);
    __real_g_list_free(list);
}

void __wrap_g_list_free_full(GList* list, GDestroyNotify release) {
    strict::release_list("g_list_free_full", list);
    __real_g_list_free_full(list, release);
    strict::list_is_released("g_list_free_full", list);
}

void __wrap_g_error_free(GError* error) {
    strict::release_error(error);
    __real_g_error_free(error);
}

gpointer __wrap_g_type_class_ref(GType type) {
    strict::log(std::string("g_type_class_ref(") + g_type_name(type) + ')');
    return __real_g_type_class_ref(type);
}

void __wrap_g_type_class_unref(gpointer type) {
    strict::log(std::string("g_type_class_unref(") + g_type_name(G_TYPE_FROM_CLASS(type)) + ')');
    __real_g_type_class_unref(type);
}

GOptionContext* __wrap_g_option_context_new(const gchar* parameters) {
    strict::log("g_option_context_new");
    return __real_g_option_context_new(parameters);
}

void __wrap_g_option_context_free(GOptionContext* context) {
    strict::log("g_option_context_free");
    __real_g_option_context_free(context);
}

void __wrap_g_option_context_set_summary(GOptionContext* context, const gchar* summary) {
    strict::log("g_option_context_set_summary");
    __real_g_option_context_set_summary(context, summary);
}

void __wrap_g_option_context_set_description(GOptionContext* context, const gchar* description) {
    strict::log("g_option_context_set_description");
    __real_g_option_context_set_description(context, description);
}

void __wrap_g_option_context_add_main_entries(GOptionContext* context, const GOptionEntry* entries,
                                              const gchar* domain) {
    strict::log("g_option_context_add_main_entries(" +
                (domain == nullptr ? "NULL" : strict::quoted(domain)) + ')');
    __real_g_option_context_add_main_entries(context, entries, domain);
}

std::size_t __wrap_fwrite(const void* text, std::size_t size, std::size_t count, std::FILE* file) {
    // The C++ library writes nothing, in no bytes, when the process ends.
    if (file == stdout && size * count > 0 && strict::is_logged()) {
        strict::log("fwrite(" + strict::quoted({static_cast<const char*>(text), size * count}) +
                    ')');
    }
    return __real_fwrite(text, size, count, file);
}

void __wrap_g_print(const gchar* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    gchar* text = g_strdup_vprintf(format, arguments);
    va_end(arguments);
    strict::log("g_print(" + strict::quoted(text) + ')');
    __real_g_print("%s", text);
    __real_g_free(text);
}

}  // extern "C"
