#include "strict_client/calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

namespace strict {

void misuse(std::string_view call, std::string_view what) {
    const std::string line = std::string(call) + ": " + std::string(what) + '\n';
    log("misuse: " + line.substr(0, line.size() - 1));
    std::fputs(line.c_str(), stderr);
    std::abort();
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        out += c == '\n' ? "\\n" : c == '"' ? "\\\"" : std::string(1, c);
    }
    return out + '"';
}

// --- The log ------------------------------------------------------------------------------------

namespace {

void log_what_was_never_released();

int log_file() {
    static const int file = [] {
        const char* path = std::getenv("ORU_STRICT_LOG");
        if (path == nullptr) {
            return -1;
        }
        const int opened = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (opened < 0) {
            std::perror(path);
            std::abort();
        }
        std::atexit(log_what_was_never_released);
        return opened;
    }();
    return file;
}

}  // namespace

bool is_logged() {
    return log_file() >= 0;
}

void log(std::string_view line) {
    if (!is_logged()) {
        return;
    }
    const std::string whole = std::string(line) + '\n';
    if (write(log_file(), whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        std::perror("ORU_STRICT_LOG");
        std::abort();
    }
}

namespace {

bool is_named_by(const char* variable, std::string_view call) {
    const char* name = std::getenv(variable);
    return name != nullptr && name == call;
}

}  // namespace

bool gives_null(std::string_view call) {
    return is_named_by("ORU_STRICT_NULL", call);
}

bool gives_error(std::string_view call) {
    return is_named_by("ORU_STRICT_ERROR", call);
}

bool is_planted(std::string_view fault) {
    static const char* planted = std::getenv("ORU_STRICT_FAULT");
    return planted != nullptr && fault == planted;
}

// --- What is handed out -------------------------------------------------------------------------

namespace {

struct object {
    GObject parent;
    held* holds;
};

struct known {
    std::string name;
    const char* type;  // NULL for what is no object
    std::size_t serial;
    bool released = false;
    // Of a list, and how often each was referred to when the list was about to be released.
    std::vector<gconstpointer> elements = {};
    std::vector<guint> references = {};
};

guint references_to(gconstpointer object) {
    return static_cast<const GObject*>(object)->ref_count;
}

// What a leak checker must not take for a reference.
using hidden = std::uintptr_t;
hidden hide(gconstpointer thing) {
    return ~reinterpret_cast<hidden>(thing);
}

// None of this is destroyed: the last releases come while the process ends.
struct everything {
    std::map<hidden, known> things;
    std::map<std::string, std::size_t, std::less<>> names;
    std::map<hidden, std::string> natives;
    // Objects that were released stay where they are: a pointer to one is known for what it is.
    std::vector<GObject*> released;
};

everything& all() {
    static everything& made = *new everything;
    return made;
}

known* find(gconstpointer thing) {
    const auto found = all().things.find(hide(thing));
    return found == all().things.end() ? nullptr : &found->second;
}

known& hand_out(gconstpointer thing, const char* type, const std::string& name) {
    const std::size_t count = ++all().names[name];
    static std::size_t serial = 0;
    return all().things[hide(thing)] = {
               .name = count == 1 ? name : name + '#' + std::to_string(count),
               .type = type,
               .serial = ++serial};
}

void log_what_was_never_released() {
    std::map<std::size_t, std::string> in_order;
    for (const auto& [thing, is] : all().things) {
        if (!is.released) {
            in_order.emplace(is.serial, is.name);
        }
    }
    for (const auto& [serial, name] : in_order) {
        log("never released: " + name);
    }
}

// The last reference is being given back. The object comes to life again, empty, so that a later
// use of it, or another release, is seen.
void dispose(GObject* disposed) {
    known& is = *find(disposed);
    if (is.released) {
        misuse("g_object_unref", is.name + " was released before");
    }
    G_OBJECT_CLASS(g_type_class_peek_static(G_TYPE_OBJECT))->dispose(disposed);
    log("release " + is.name);
    auto* self = reinterpret_cast<object*>(disposed);
    delete self->holds;
    self->holds = nullptr;
    is.released = true;
    all().released.push_back(disposed);
    g_object_ref(disposed);
}

GType type_named(const char* name) {
    if (const GType type = g_type_from_name(name); type != 0) {
        return type;
    }
    const auto initialise = [](gpointer type, gpointer) {
        static_cast<GObjectClass*>(type)->dispose = dispose;
    };
    return g_type_register_static_simple(G_TYPE_OBJECT, name, sizeof(GObjectClass), initialise,
                                         sizeof(object), nullptr, GTypeFlags(0));
}

}  // namespace

gpointer new_object(const char* type, const std::string& name, held* holds) {
    gpointer made = g_object_new(type_named(type), nullptr);
    static_cast<object*>(made)->holds = holds;
    hand_out(made, type, name);
    return made;
}

held& held_by(std::string_view call, const char* type, gconstpointer of) {
    if (of == nullptr) {
        misuse(call, std::string("NULL is no ") + type);
    }
    const known* is = find(of);
    if (is == nullptr || is->type == nullptr || std::string_view(is->type) != type) {
        misuse(call, (is == nullptr ? std::string("something else") : is->name) + " is no " + type);
    }
    if (is->released) {
        misuse(call, is->name + " was released");
    }
    return *static_cast<const object*>(of)->holds;
}

const std::string& name_of(gconstpointer object) {
    return find(object)->name;
}

void name_native(const qw::map& map, gconstpointer object) {
    all().natives.emplace(hide(&map), name_of(object));
}

void forget_native(const qw::map& map) {
    all().natives.erase(hide(&map));
}

void hand_out_block(gconstpointer block, const std::string& name) {
    hand_out(block, nullptr, name);
}

void hand_out_list(const GList* list, std::string_view call) {
    known& is = hand_out(list, nullptr, "list of " + std::string(call));
    for (const GList* link = list; link != nullptr; link = link->next) {
        is.elements.push_back(link->data);
    }
}

void hand_out_error(const GError* error, std::string_view call) {
    hand_out(error, nullptr, "error of " + std::string(call));
}

std::string handed_out(gconstpointer thing) {
    const known* is = thing == nullptr ? nullptr : find(thing);
    return is == nullptr ? "" : is->name;
}

void release_block(gconstpointer block) {
    if (const std::string name = handed_out(block); !name.empty()) {
        log("g_free(" + name + ')');
        all().things.erase(hide(block));
    }
}

void release_list(std::string_view call, const GList* list) {
    known* is = list == nullptr ? nullptr : find(list);
    if (is == nullptr) {
        return;
    }
    log(std::string(call) + '(' + is->name + ')');
    for (gconstpointer element : is->elements) {
        is->references.push_back(references_to(element));
    }
}

void list_is_released(std::string_view call, const GList* list) {
    const known* is = list == nullptr ? nullptr : find(list);
    if (is == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < is->elements.size(); ++i) {
        // Who holds on to an element has a reference of its own: the list's is given back all the
        // same.
        gconstpointer element = is->elements[i];
        if (!find(element)->released && references_to(element) >= is->references[i]) {
            misuse(call, is->name + " is freed without its element " + find(element)->name);
        }
    }
    all().things.erase(hide(list));
}

void release_error(const GError* error) {
    const std::string name = handed_out(error);
    log("g_error_free(" + (name.empty() ? "another error" : name) + ')');
    all().things.erase(hide(error));
}

void log_native_read(const qw::map& map, const std::string& key) {
    // Only a map of the service's has a name.
    const auto native = all().natives.find(hide(&map));
    if (native != all().natives.end()) {
        log("find(" + native->second + ", " + quoted(key) + ')');
    }
}

// --- One call -----------------------------------------------------------------------------------

namespace {

std::string object_shown(std::string_view call, const char* type, gconstpointer object) {
    held_by(call, type, object);
    return name_of(object);
}

}  // namespace

std::string shown(std::string_view call, OruMap* map) {
    return object_shown(call, "OruMap", map);
}
std::string shown(std::string_view call, OruStream* stream) {
    return object_shown(call, "OruStream", stream);
}
std::string shown(std::string_view call, OruChannel* channel) {
    return object_shown(call, "OruChannel", channel);
}
std::string shown(std::string_view call, OruInput* input) {
    return object_shown(call, "OruInput", input);
}
std::string shown(std::string_view call, OruOutput* output) {
    return object_shown(call, "OruOutput", output);
}
std::string shown(std::string_view call, OruSystem* system) {
    return object_shown(call, "OruSystem", system);
}
std::string shown(std::string_view call, OruMode* mode) {
    return object_shown(call, "OruMode", mode);
}

std::string shown(std::string_view call, const gchar* text) {
    if (text == nullptr) {
        misuse(call, "NULL is no text");
    }
    return quoted(text);
}

std::string shown(std::string_view call, GError** error) {
    if (error == nullptr) {
        return "NULL";
    }
    if (*error != nullptr) {
        misuse(call, "the error pointer holds an error already");
    }
    return "&error";
}

std::string shown(std::string_view call, guint32* out) {
    if (out == nullptr) {
        misuse(call, "there is no place for a result");
    }
    return '&' + std::to_string(*out);
}

std::string shown(std::string_view, guint32 number) {
    return std::to_string(number);
}

std::string shown(std::string_view call, gint32 boolean) {
    if (boolean != FALSE && boolean != TRUE) {
        misuse(call, std::to_string(boolean) + " is no boolean");
    }
    return boolean != FALSE ? "TRUE" : "FALSE";
}

std::string shown(std::string_view, gint64 number) {
    return std::to_string(number);
}

std::string shown(std::string_view, guint64 number) {
    return std::to_string(number);
}

std::string shown(std::string_view, gdouble number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string shown(std::string_view call, always_null argument) {
    if (argument.is != nullptr) {
        misuse(call, "an argument is not NULL");
    }
    return "NULL";
}

void call::fails(GError** error, const std::string& message) const {
    log(text_ + " -> failed");
    if (!gives_null(name_)) {
        set_error(error, message);
    }
}

void call::succeeds(GError** error) const {
    if (gives_error(name_)) {
        set_error(error, "an error beside an answer");
    }
}

void call::set_error(GError** error, const std::string& message) const {
    if (error == nullptr || *error != nullptr) {
        return;
    }
    static const GQuark domain = g_quark_from_static_string("strict-error-quark");
    g_set_error_literal(error, domain, 1, message.c_str());
    hand_out_error(*error, name_);
}

}  // namespace strict
