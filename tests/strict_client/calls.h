// Checks every call to the service, and logs it on request. Each object that the client returns
// keeps a name such as "stream 1 settings" until the process ends, so that a use after the release
// and a second release are detected. A misuse is reported in one line on standard error that names
// the call, and the process aborts.
//
//   ORU_STRICT_LOG=FILE   log each call, each release, each text that the tools write to standard
//                         output, and at the end what was never released
//   ORU_STRICT_EXACT=1    a typed getter returns its default for every other kind
//   ORU_STRICT_NULL=NAME  the operation of that name returns NULL or FALSE without an error
//   ORU_STRICT_ERROR=NAME the query of that name sets its error although it succeeds
//   ORU_STRICT_WRITE=N    writing the Nth JSON text fails; see failing_writer/report/json.h
//   ORU_STRICT_FAULT=NAME the library has the fault of that name; see faults.cpp
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <glib-object.h>
#include <oru.h>
#include <qwire.h>

namespace strict {

[[noreturn]] void misuse(std::string_view call, std::string_view what);

bool is_logged();
void log(std::string_view line);
std::string quoted(std::string_view text);
void log_native_read(const qw::map& map, const std::string& key);

// Return whether $ORU_STRICT_NULL or $ORU_STRICT_ERROR names the operation, or $ORU_STRICT_FAULT
// the fault.
bool gives_null(std::string_view call);
bool gives_error(std::string_view call);
bool is_planted(std::string_view fault);

// --- Objects, blocks, lists and errors ----------------------------------------------------------

// The content of an object, destroyed when the object is released.
struct object_content {
    virtual ~object_content() = default;
};

// Returns a new object of the named type. The second object of one name is called "stream 1#2".
gpointer new_object(const char* type, const std::string& name, object_content* content);

// Returns the content of an object of the named type. An object of another type, or a released one,
// is a misuse.
object_content& content_of(std::string_view call, const char* type, gconstpointer object);
const std::string& name_of(gconstpointer object);

// Gives a map's native form the name of its object, until the object is released.
void name_native(const qw::map& map, gconstpointer object);
void forget_native(const qw::map& map);

// Give a block, list or error a name, until it is released through GLib.
void hand_out_block(gconstpointer block, const std::string& name);
void hand_out_list(const GList* list, std::string_view call);
void hand_out_error(const GError* error, std::string_view call);

// Record a release. `block`, `list` and `error` may be of another origin.
void release_block(gconstpointer block);
void release_list(std::string_view call, const GList* list);
void list_is_released(std::string_view call, const GList* list);
void release_error(const GError* error);
// Returns the name of a block, list or error, or "" if it is of another origin.
std::string handed_out(gconstpointer thing);

// --- One call -----------------------------------------------------------------------------------

// Return the argument in the form of the log. An argument that cannot be right is a misuse.
std::string shown(std::string_view call, OruMap* map);
std::string shown(std::string_view call, OruStream* stream);
std::string shown(std::string_view call, OruChannel* channel);
std::string shown(std::string_view call, OruInput* input);
std::string shown(std::string_view call, OruOutput* output);
std::string shown(std::string_view call, OruSystem* system);
std::string shown(std::string_view call, OruMode* mode);
std::string shown(std::string_view call, const gchar* text);
std::string shown(std::string_view call, GError** error);
std::string shown(std::string_view call, guint32* out);  // with its value
std::string shown(std::string_view call, guint32 number);
std::string shown(std::string_view call, gint32 boolean);
std::string shown(std::string_view call, gint64 number);
std::string shown(std::string_view call, guint64 number);
std::string shown(std::string_view call, gdouble number);

// An argument that may be NULL, and one that must be NULL.
template <class T>
struct or_null {
    T* argument;
};
struct always_null {
    gconstpointer argument;
};
template <class T>
std::string shown(std::string_view call, or_null<T> wrapped) {
    return wrapped.argument == nullptr ? "NULL" : shown(call, wrapped.argument);
}
std::string shown(std::string_view call, always_null wrapped);

// One call. The constructor checks the arguments.
class call {
  public:
    template <class... Arguments>
    explicit call(const char* name, Arguments... arguments) : name_(name) {
        ((text_ += (text_.empty() ? "" : ", ") + shown(name, arguments)), ...);
        text_ = name_ + '(' + text_ + ')';
    }

    const std::string& name() const { return name_; }

    // Log the call with its result, and return the result.
    void gives_nothing() const { log(text_); }
    template <class T>
    T gives(T result, const std::string& shown_result) const {
        log(text_ + " -> " + shown_result);
        return result;
    }
    template <class T>
    T* gives_object(T* object) const {
        return gives(object, name_of(object));
    }

    // Logs that the call failed. Sets the error, if the caller passes one, unless $ORU_STRICT_NULL
    // names the operation.
    void fails(GError** error, const std::string& message) const;

    // Sets the error of a successful call if $ORU_STRICT_ERROR names the operation.
    void succeeds(GError** error) const;

  private:
    void set_error(GError** error, const std::string& message) const;

    std::string name_;
    std::string text_;
};

}  // namespace strict
