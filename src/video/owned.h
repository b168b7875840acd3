// Scope-bound owners of the objects, lists, errors and blocks that GLib and the video service
// return. Pass std::out_ptr(error) of an owned_error as a GError out-parameter.
#pragma once

#include <memory>

#include <glib-object.h>

struct release_object {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
// A link whose object was taken contains NULL.
struct release_object_list {
    void operator()(GList* list) const noexcept {
        g_list_free_full(list, [](gpointer object) {
            if (object != nullptr) {
                g_object_unref(object);
            }
        });
    }
};
struct release_error {
    void operator()(GError* error) const noexcept { g_error_free(error); }
};
struct release_option_context {
    void operator()(GOptionContext* context) const noexcept { g_option_context_free(context); }
};
struct release_class {
    void operator()(gpointer type) const noexcept { g_type_class_unref(type); }
};
struct release_block {
    void operator()(gpointer block) const noexcept { g_free(block); }
};

template <class Object>
using owned_object = std::unique_ptr<Object, release_object>;
using owned_object_list = std::unique_ptr<GList, release_object_list>;
using owned_error = std::unique_ptr<GError, release_error>;
using owned_option_context = std::unique_ptr<GOptionContext, release_option_context>;
template <class Class>
using owned_class = std::unique_ptr<Class, release_class>;
using owned_block = std::unique_ptr<void, release_block>;
