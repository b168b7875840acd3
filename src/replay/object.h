// What the object types of the client interface have in common: each holds its record of the
// snapshot, and answers a question from it or with a GError.
#pragma once

#include <memory>
#include <new>
#include <optional>

#include <oru.h>
#include <qwire.h>

#include "snapshot/lookup.h"

// Defines the GObject type `Name`, whose instances hold a `Held`.
#define ORU_DEFINE_TYPE(Name, name, Held)                        \
    struct _##Name {                                             \
        GObject parent;                                          \
        Held held;                                               \
    };                                                           \
    G_DEFINE_FINAL_TYPE(Name, name, G_TYPE_OBJECT)               \
    static void name##_init(Name* self) {                        \
        new (&self->held) Held;                                  \
    }                                                            \
    static void name##_finalize(GObject* object) {               \
        std::destroy_at(&reinterpret_cast<Name*>(object)->held); \
        G_OBJECT_CLASS(name##_parent_class)->finalize(object);   \
    }                                                            \
    static void name##_class_init(Name##Class* type) {           \
        G_OBJECT_CLASS(type)->finalize = name##_finalize;        \
    }

namespace replay {

// A record together with the document that it stands in.
template <class Record>
using held = std::shared_ptr<const Record>;

// These set the error and return NULL.
std::nullptr_t not_recorded(const snapshot::query& asked, GError** error);
std::nullptr_t failed(const snapshot::failure& fails, GError** error);

// Returns the recorded answer, or NULL with the error set.
template <class T>
const T* recorded(const snapshot::answer<T>& is, const snapshot::query& asked, GError** error) {
    if (const auto* fails = std::get_if<snapshot::failure>(&is); fails != nullptr) {
        return failed(*fails, error);
    }
    const auto* value = std::get_if<T>(&is);
    return value != nullptr ? value : not_recorded(asked, error);
}

// Returns the answer under the name that `asked` holds, or NULL with the error set.
template <class T>
const T* recorded_name(const snapshot::answer<std::span<const snapshot::named_answer<T>>>& is,
                       const snapshot::query& asked, GError** error) {
    const auto* all = recorded(is, {asked.subject, asked.number, asked.part}, error);
    if (all == nullptr) {
        return nullptr;
    }
    const auto* found = snapshot::find(*all, asked.name);
    return found != nullptr ? recorded(*found, asked, error) : not_recorded(asked, error);
}

// Returns the current document, or NULL with the error set.
std::shared_ptr<const snapshot::answers> reach(GError** error);

// Returns a new OruMap of a recorded map, whose entries `owner` keeps alive, or NULL with the error
// set.
OruMap* new_map(const snapshot::answer<snapshot::map_entries>& is,
                std::shared_ptr<const void> owner, const snapshot::query& asked, GError** error);
OruMap* new_map(qw::map map);

// Returns a new object that holds `record` of the document `owner`.
template <class Object, class Record>
Object* new_object(GType type, const std::shared_ptr<const snapshot::answers>& owner,
                   const Record& record) {
    auto* object = static_cast<Object*>(g_object_new(type, nullptr));
    object->held = std::shared_ptr<const Record>(owner, &record);
    return object;
}

// Looks the record of that number up in a list that ascends by id. Returns a new object that holds
// it, or NULL with the error set.
template <class Object, class Record>
Object* find_object(GType type, snapshot::answer<std::vector<Record>> snapshot::records::* list,
                    const char* subject, guint32 number, GError** error) {
    const auto doc = reach(error);
    const auto* records =
        doc != nullptr ? recorded((*doc).*list, {subject, number}, error) : nullptr;
    if (records == nullptr) {
        return nullptr;
    }
    const auto* found = snapshot::find(*records, number);
    if (found == nullptr) {
        return not_recorded({subject, number}, error);
    }
    if (found->fails) {
        return failed(*found->fails, error);
    }
    return new_object<Object>(type, doc, *found);
}

// Fill the out-values from an answer, unless it is NULL. Return whether there was one.
inline gboolean fill(const snapshot::rectangle* from, guint32* x, guint32* y, guint32* width,
                     guint32* height) {
    if (from != nullptr) {
        *x = from->x;
        *y = from->y;
        *width = from->width;
        *height = from->height;
    }
    return from != nullptr;
}

inline gboolean fill(const snapshot::resolution* from, guint32* width, guint32* height) {
    if (from != nullptr) {
        *width = from->width;
        *height = from->height;
    }
    return from != nullptr;
}

}  // namespace replay
