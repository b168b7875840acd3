#include "support/option_context.h"

#include <cstdio>

#include <glib.h>

bool option_context_fails = false;

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" {

GOptionContext* __real_g_option_context_new(const gchar* parameters);
void __real_g_option_context_free(GOptionContext* context);
void __real_g_error_free(GError* error);

GOptionContext* __wrap_g_option_context_new(const gchar* parameters) {
    return option_context_fails ? nullptr : __real_g_option_context_new(parameters);
}

void __wrap_g_option_context_free(GOptionContext* context) {
    std::fputs("context released; ", stderr);
    __real_g_option_context_free(context);
}

void __wrap_g_error_free(GError* error) {
    std::fputs("error released; ", stderr);
    __real_g_error_free(error);
}
}
// NOLINTEND(bugprone-reserved-identifier)
