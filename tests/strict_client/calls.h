// The watch over every call to the service. What is passed is checked and may be logged; what is
// handed out is known by a name such as "stream 1 settings" until the process ends, so that a use
// after the release, or a release too many, is told from all else. A mistake is told in one line on
// standard error that names the call, and the process aborts.
//
//   ORU_STRICT_LOG=FILE   log each call, each release, each text that the tools write to standard
//                         output, and at the end what was never released. The list at the end goes
//                         nowhere else: standard error is the tools' own.
//   ORU_STRICT_EXACT=1    a typed getter returns its default for every kind but its own
//   ORU_STRICT_NULL=NAME  the operation of that name gives NULL or FALSE, and no error
//   ORU_STRICT_ERROR=NAME the query of that name sets its error although it succeeds
//   ORU_STRICT_WRITE=N    the Nth JSON text fails to be written; see failing_writer/report/json.h
//   ORU_STRICT_FAULT=NAME the fault of that name is in the library; see faults.cpp
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

// Whether $ORU_STRICT_NULL or $ORU_STRICT_ERROR names the operation, or $ORU_STRICT_FAULT the
// fault.
bool gives_null(std::string_view call);
bool gives_error(std::string_view call);
bool is_planted(std::string_view fault);

// --- What is handed out -------------------------------------------------------------------------

// What an object holds for as long as nobody has released it.
struct held {
    virtual ~held() = default;
};

// Returns a new object of the named type. Two of one name are told apart: "stream 1#2".
gpointer new_object(const char* type, const std::string& name, held* holds);

// Returns what an object of the named type holds. It is a misuse when it is no such object, or was
// released.
held& held_by(std::string_view call, const char* type, gconstpointer object);
const std::string& name_of(gconstpointer object);

// A map's native form goes by the name of its object, until that is released.
void name_native(const qw::map& map, gconstpointer object);
void forget_native(const qw::map& map);

// Blocks, lists and errors, each until it is released through GLib.
void hand_out_block(gconstpointer block, const std::string& name);
void hand_out_list(const GList* list, std::string_view call);
void hand_out_error(const GError* error, std::string_view call);

// These are told of the releases; `block`, `list` and `error` may be of somebody else's.
void release_block(gconstpointer block);
void release_list(std::string_view call, const GList* list);
void list_is_released(std::string_view call, const GList* list);
void release_error(const GError* error);
// Returns the name of a thing of that kind, or "" for somebody else's.
std::string handed_out(gconstpointer thing);

// --- One call -----------------------------------------------------------------------------------

// Each returns the argument as the log shows it, when it can be right.
std::string shown(std::string_view call, OruMap* map);
std::string shown(std::string_view call, OruStream* stream);
std::string shown(std::string_view call, OruChannel* channel);
std::string shown(std::string_view call, OruInput* input);
std::string shown(std::string_view call, OruOutput* output);
std::string shown(std::string_view call, OruSystem* system);
std::string shown(std::string_view call, OruMode* mode);
std::string shown(std::string_view call, const gchar* text);
std::string shown(std::string_view call, GError** error);
std::string shown(std::string_view call, guint32* out);  // with what it points to
std::string shown(std::string_view call, guint32 number);
std::string shown(std::string_view call, gint32 boolean);
std::string shown(std::string_view call, gint64 number);
std::string shown(std::string_view call, guint64 number);
std::string shown(std::string_view call, gdouble number);

// An argument that may be NULL, and one that must be.
template <class T>
struct or_null {
    T* is;
};
struct always_null {
    gconstpointer is;
};
template <class T>
std::string shown(std::string_view call, or_null<T> argument) {
    return argument.is == nullptr ? "NULL" : shown(call, argument.is);
}
std::string shown(std::string_view call, always_null argument);

// A call that was made: its arguments are checked before anything else is done.
class call {
  public:
    template <class... Arguments>
    explicit call(const char* name, Arguments... arguments) : name_(name) {
        ((text_ += (text_.empty() ? "" : ", ") + shown(name, arguments)), ...);
        text_ = name_ + '(' + text_ + ')';
    }

    const std::string& name() const { return name_; }

    // Each logs the call with its result, and returns that.
    void gives_nothing() const { log(text_); }
    template <class T>
    T gives(T result, const std::string& said) const {
        log(text_ + " -> " + said);
        return result;
    }
    template <class T>
    T* gives_object(T* object) const {
        return gives(object, name_of(object));
    }

    // Logs that the call failed, and sets the error when one is asked for and $ORU_STRICT_NULL
    // names another operation.
    void fails(GError** error, const std::string& message) const;

    // Sets the error of a call that succeeds, if $ORU_STRICT_ERROR names it.
    void succeeds(GError** error) const;

  private:
    void set_error(GError** error, const std::string& message) const;

    std::string name_;
    std::string text_;
};

}  // namespace strict
