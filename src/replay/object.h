// The common part of the object types of the client interface. Each object has a record of the
// snapshot, and answers queries from it or with a GError.
#pragma once

#include <memory>
#include <new>
#include <optional>

#include <oru.h>
#include <qwire.h>

#include "snapshot/lookup.h"

// Defines the GObject type `Name`, whose instances have a `content` of type `Content`.
#define ORU_DEFINE_TYPE(Name, name, Content)                        \
    struct _##Name {                                                \
        GObject parent;                                             \
        Content content;                                            \
    };                                                              \
    G_DEFINE_FINAL_TYPE(Name, name, G_TYPE_OBJECT)                  \
    static void name##_init(Name* self) {                           \
        new (&self->content) Content;                               \
    }                                                               \
    static void name##_finalize(GObject* object) {                  \
        std::destroy_at(&reinterpret_cast<Name*>(object)->content); \
        G_OBJECT_CLASS(name##_parent_class)->finalize(object);      \
    }                                                               \
    static void name##_class_init(Name##Class* type) {              \
        G_OBJECT_CLASS(type)->finalize = name##_finalize;           \
    }

namespace replay {

// A record that keeps its snapshot alive.
template <class Record>
using record_of = std::shared_ptr<const Record>;

// Set the error and return NULL.
std::nullptr_t not_recorded(const snapshot::query& query, GError** error);
std::nullptr_t failed(const snapshot::failure& failure, GError** error);

// Returns the recorded answer, or NULL with the error set.
template <class T>
const T* recorded(const snapshot::answer<T>& answer, const snapshot::query& query, GError** error) {
    if (const auto* failure = std::get_if<snapshot::failure>(&answer); failure != nullptr) {
        return failed(*failure, error);
    }
    const auto* value = std::get_if<T>(&answer);
    return value != nullptr ? value : not_recorded(query, error);
}

// Returns the answer under the name in the query, or NULL with the error set.
template <class T>
const T* recorded_name(const snapshot::answer<std::span<const snapshot::named_answer<T>>>& answers,
                       const snapshot::query& query, GError** error) {
    const auto* list = recorded(answers, {query.subject, query.number, query.part}, error);
    if (list == nullptr) {
        return nullptr;
    }
    const auto* found = snapshot::find(*list, query.name);
    return found != nullptr ? recorded(*found, query, error) : not_recorded(query, error);
}

// Returns the current snapshot, or NULL with the error set.
std::shared_ptr<const snapshot::answers> reach(GError** error);

// Returns a new OruMap of a recorded map, whose entries `owner` keeps alive, or NULL with the error
// set.
OruMap* new_map(const snapshot::answer<snapshot::map_entries>& answer,
                std::shared_ptr<const void> owner, const snapshot::query& query, GError** error);
OruMap* new_map(qw::map map);

// Returns a new object with `record`, which is part of the snapshot `owner`.
template <class Object, class Record>
Object* new_object(GType type, const std::shared_ptr<const snapshot::answers>& owner,
                   const Record& record) {
    auto* object = static_cast<Object*>(g_object_new(type, nullptr));
    object->content = std::shared_ptr<const Record>(owner, &record);
    return object;
}

// Returns a new object with the record of that number in the list, or NULL with the error set.
template <class Object, class Record>
Object* find_object(GType type, snapshot::answer<std::vector<Record>> snapshot::records::* list,
                    const char* subject, guint32 number, GError** error) {
    const auto snapshot = reach(error);
    const auto* records =
        snapshot != nullptr ? recorded((*snapshot).*list, {subject, number}, error) : nullptr;
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
    return new_object<Object>(type, snapshot, *found);
}

// Fill the out-values from an answer, unless it is NULL. Return whether there is one.
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
