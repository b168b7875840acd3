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

void log_unreleased();

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
        std::atexit(log_unreleased);
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

// --- Objects, blocks, lists and errors ----------------------------------------------------------

namespace {

struct object {
    GObject parent;
    object_content* content;
};

struct tracked {
    std::string name;
    const char* type;  // NULL for a block, list or error
    std::size_t serial;
    bool released = false;
    // The elements of a list, and their reference counts just before the list is released.
    std::vector<gconstpointer> elements = {};
    std::vector<guint> references = {};
};

guint references_to(gconstpointer object) {
    return static_cast<const GObject*>(object)->ref_count;
}

// A pointer that a leak checker does not recognise as a reference.
using hidden = std::uintptr_t;
hidden hide(gconstpointer thing) {
    return ~reinterpret_cast<hidden>(thing);
}

// Never destroyed, because the last releases happen while the process ends.
struct everything {
    std::map<hidden, tracked> things;
    std::map<std::string, std::size_t, std::less<>> names;
    std::map<hidden, std::string> natives;
    // The memory of released objects is kept, so that a pointer to one can be recognised.
    std::vector<GObject*> released;
};

everything& all() {
    static everything& instance = *new everything;
    return instance;
}

tracked* find(gconstpointer thing) {
    const auto found = all().things.find(hide(thing));
    return found == all().things.end() ? nullptr : &found->second;
}

tracked& hand_out(gconstpointer thing, const char* type, const std::string& name) {
    const std::size_t count = ++all().names[name];
    static std::size_t serial = 0;
    return all().things[hide(thing)] = {
               .name = count == 1 ? name : name + '#' + std::to_string(count),
               .type = type,
               .serial = ++serial};
}

void log_unreleased() {
    std::map<std::size_t, std::string> in_order;
    for (const auto& [thing, entry] : all().things) {
        if (!entry.released) {
            in_order.emplace(entry.serial, entry.name);
        }
    }
    for (const auto& [serial, name] : in_order) {
        log("never released: " + name);
    }
}

// Called when the last reference is released. Keeps the object alive, without content, so that a
// later use or another release is detected.
void dispose(GObject* disposed) {
    tracked& entry = *find(disposed);
    if (entry.released) {
        misuse("g_object_unref", entry.name + " was released before");
    }
    G_OBJECT_CLASS(g_type_class_peek_static(G_TYPE_OBJECT))->dispose(disposed);
    log("release " + entry.name);
    auto* self = reinterpret_cast<object*>(disposed);
    delete self->content;
    self->content = nullptr;
    entry.released = true;
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

gpointer new_object(const char* type, const std::string& name, object_content* content) {
    gpointer made = g_object_new(type_named(type), nullptr);
    static_cast<object*>(made)->content = content;
    hand_out(made, type, name);
    return made;
}

object_content& content_of(std::string_view call, const char* type, gconstpointer instance) {
    if (instance == nullptr) {
        misuse(call, std::string("NULL is no ") + type);
    }
    const tracked* entry = find(instance);
    if (entry == nullptr || entry->type == nullptr || std::string_view(entry->type) != type) {
        misuse(call,
               (entry == nullptr ? std::string("something else") : entry->name) + " is no " + type);
    }
    if (entry->released) {
        misuse(call, entry->name + " was released");
    }
    return *static_cast<const object*>(instance)->content;
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
    tracked& entry = hand_out(list, nullptr, "list of " + std::string(call));
    for (const GList* link = list; link != nullptr; link = link->next) {
        entry.elements.push_back(link->data);
    }
}

void hand_out_error(const GError* error, std::string_view call) {
    hand_out(error, nullptr, "error of " + std::string(call));
}

std::string handed_out(gconstpointer thing) {
    const tracked* entry = thing == nullptr ? nullptr : find(thing);
    return entry == nullptr ? "" : entry->name;
}

void release_block(gconstpointer block) {
    if (const std::string name = handed_out(block); !name.empty()) {
        log("g_free(" + name + ')');
        all().things.erase(hide(block));
    }
}

void release_list(std::string_view call, const GList* list) {
    tracked* entry = list == nullptr ? nullptr : find(list);
    if (entry == nullptr) {
        return;
    }
    log(std::string(call) + '(' + entry->name + ')');
    for (gconstpointer element : entry->elements) {
        entry->references.push_back(references_to(element));
    }
}

void list_is_released(std::string_view call, const GList* list) {
    const tracked* entry = list == nullptr ? nullptr : find(list);
    if (entry == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < entry->elements.size(); ++i) {
        // The list's reference must be released even if the caller keeps a reference of its own.
        gconstpointer element = entry->elements[i];
        if (!find(element)->released && references_to(element) >= entry->references[i]) {
            misuse(call, entry->name + " is freed without its element " + find(element)->name);
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
    // Only maps from the service have a name.
    const auto native = all().natives.find(hide(&map));
    if (native != all().natives.end()) {
        log("find(" + native->second + ", " + quoted(key) + ')');
    }
}

// --- One call -----------------------------------------------------------------------------------

namespace {

std::string object_shown(std::string_view call, const char* type, gconstpointer object) {
    content_of(call, type, object);
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

std::string shown(std::string_view call, always_null wrapped) {
    if (wrapped.argument != nullptr) {
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
