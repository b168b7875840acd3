// Owners of objects that a faulty library may destroy too early. GObject's weak pointers clear the
// owner then, so that the probe reports the fault instead of crashing.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include <glib-object.h>

#include "video/owned.h"

namespace probe {

inline GObject* as_gobject(gpointer object) {
    return static_cast<GObject*>(object);
}

// Owns one reference to an object, or none.
template <class Object>
class tracked {
  public:
    // Takes over the caller's reference. `object` may be NULL.
    explicit tracked(Object* object) : object_(std::make_unique<gpointer>(object)) {
        if (object != nullptr) {
            g_object_add_weak_pointer(as_gobject(object), object_.get());
        }
    }
    tracked(tracked&&) noexcept = default;
    tracked(const tracked&) = delete;
    tracked& operator=(tracked&&) = delete;
    tracked& operator=(const tracked&) = delete;
    ~tracked() {
        if (object_ != nullptr) {
            release();
        }
    }

    // Returns the object, or NULL if there is none or the library has destroyed it.
    Object* get() const { return static_cast<Object*>(*object_); }

    void release() {
        if (Object* object = get(); object != nullptr) {
            g_object_remove_weak_pointer(as_gobject(object), object_.get());
            *object_ = nullptr;
            g_object_unref(object);
        }
    }

  private:
    std::unique_ptr<gpointer> object_;  // GObject writes NULL here, so the address must not change
};

struct release_tracked_list {
    void operator()(GList* list) const noexcept {
        for (GList* link = list; link != nullptr; link = link->next) {
            if (link->data != nullptr) {
                g_object_remove_weak_pointer(as_gobject(link->data), &link->data);
            }
        }
        release_object_list()(list);
    }
};

// A list of objects. The link of an object that the library has destroyed contains NULL.
using tracked_list = std::unique_ptr<GList, release_tracked_list>;

// The checks use at most this many objects of each kind.
inline constexpr std::size_t max_objects = 16;

// Takes over a list from the service, and releases its elements beyond the first max_objects.
// `list` may be NULL, the empty list.
inline tracked_list track(GList* list) {
    if (GList* rest = g_list_nth(list, max_objects); rest != nullptr) {
        std::exchange(rest->prev, nullptr)->next = nullptr;
        release_object_list()(rest);
    }
    for (GList* link = list; link != nullptr; link = link->next) {
        if (link->data != nullptr) {
            g_object_add_weak_pointer(as_gobject(link->data), &link->data);
        }
    }
    return tracked_list(list);
}

}  // namespace probe
