// Owners that know when what they own is gone before they gave it back: a library that counts
// references wrongly shall be told of, not crashed with.
#pragma once

#include <memory>

#include <glib-object.h>

#include "video/owned.h"

inline GObject* as_gobject(gpointer object) {
    return static_cast<GObject*>(object);
}

// One reference to an object, or none.
template <class Object>
class living {
  public:
    // Takes the reference over; `object` may be NULL.
    explicit living(Object* object) : place_(std::make_unique<gpointer>(object)) {
        if (object != nullptr) {
            g_object_add_weak_pointer(as_gobject(object), place_.get());
        }
    }
    living(living&&) noexcept = default;
    living(const living&) = delete;
    living& operator=(living&&) = delete;
    living& operator=(const living&) = delete;
    ~living() {
        if (place_ != nullptr) {
            release();
        }
    }

    // Returns the object, or NULL when there is none or it is gone.
    Object* get() const { return static_cast<Object*>(*place_); }

    void release() {
        if (Object* object = get(); object != nullptr) {
            g_object_remove_weak_pointer(as_gobject(object), place_.get());
            *place_ = nullptr;
            g_object_unref(object);
        }
    }

  private:
    std::unique_ptr<gpointer> place_;
};

// A list of objects: the link of one that is gone holds NULL.
struct release_living_list {
    void operator()(GList* list) const noexcept {
        for (GList* link = list; link != nullptr; link = link->next) {
            if (link->data != nullptr) {
                g_object_remove_weak_pointer(as_gobject(link->data), &link->data);
            }
        }
        release_object_list()(list);
    }
};
using living_list = std::unique_ptr<GList, release_living_list>;

// Takes a list of the service's over, which may be NULL.
inline living_list watch(GList* list) {
    for (GList* link = list; link != nullptr; link = link->next) {
        if (link->data != nullptr) {
            g_object_add_weak_pointer(as_gobject(link->data), &link->data);
        }
    }
    return living_list(list);
}
