// The native forms of what the video service returns: the bus library's map behind an OruMap, and
// plain blocks of memory. Only native.cpp depends on their layout. It is the file to adapt for a
// device that has its own client libraries.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <oru.h>

#include "video/owned.h"

// --- Maps ---------------------------------------------------------------------------------------
//
// Maps and keys must not be NULL.

// Returns the value under `key` if it is a 16-bit or 32-bit unsigned one, otherwise `def`.
std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def);

// A value of a map. A native_other is of a kind that no getter reads.
struct native_pair {
    std::uint32_t first;
    std::uint32_t second;
};
struct native_other {};
using native_value = std::variant<bool, std::string, std::int64_t, double, native_pair,
                                  std::uint16_t, std::uint32_t, native_other>;

struct native_entry {
    std::string key;
    native_value value;
};

// A handle of the bus library's map behind `map`, which must outlive the handle and must not
// change.
class native_map {
  public:
    explicit native_map(OruMap* map);

    // Return the contents of the map in ascending byte order of the keys.
    std::vector<std::string> keys() const;
    std::vector<native_entry> entries() const;

    // Returns the bus's code for the kind of the value under `key`. The map must contain the key.
    unsigned kind_code(std::string_view key) const;

    // Returns the map as a JSON object, written by the bus library. Throws a std::runtime_error
    // with the library's message if the library fails.
    std::string to_json() const;

  private:
    friend class native_table;
    const void* map_;
};

// A table of names and values that the bus library writes as JSON. The maps from which values were
// inserted must outlive the table and must not change.
class native_table {
  public:
    native_table();
    ~native_table();

    // Stores a copy of `text` under `name` and replaces an existing value.
    void assign(std::string_view name, std::string_view text);

    // Stores the value that `from` contains under `key`, with its kind, unless the table already
    // has a value under `name`. The map must contain the key.
    void insert(std::string_view name, const native_map& from, std::string_view key);

    // See native_map::to_json().
    std::string to_json() const;

  private:
    struct content;
    std::unique_ptr<content> content_;
};

// --- Pairs, resolutions, lists ------------------------------------------------------------------

// Returns the two halves of a result of oru_map_get_pair32u().
native_pair halves_of(std::uint64_t pair);

// Pixels.
struct native_resolution {
    std::uint32_t width;
    std::uint32_t height;
};

// Returns the number of resolutions in a result of oru_channel_get_resolutions(), which must not be
// NULL.
std::uint64_t native_resolution_count(const void* set);

// Returns these resolutions, or the first `most` of them. Throws a std::length_error that contains
// their number if it exceeds the size of the address space.
std::vector<native_resolution> native_resolutions(
    const void* set, std::uint64_t most = std::numeric_limits<std::uint64_t>::max());

// Returns the object in a list's link. The list still owns it.
template <class Object>
Object* object_in(const GList* link) {
    return static_cast<Object*>(link->data);
}

// Takes the object out of a list's link, which then contains NULL.
template <class Object>
owned_object<Object> take_object(GList* link) {
    return owned_object<Object>{static_cast<Object*>(std::exchange(link->data, nullptr))};
}
