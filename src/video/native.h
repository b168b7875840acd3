// The forms in which the video service hands things out as they are: the bus library's map behind
// an OruMap, and plain blocks of memory. native.cpp alone knows what they look like; on a device
// with libraries of its own, it is the file to adapt.
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

// Returns the value under `key` when it is a 16-bit or 32-bit unsigned one, and `def` when it is of
// any other kind or absent.
std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def);

// What a map holds under one key. An `native_other` is of a kind that no getter reads.
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

// A handle of the bus library's map behind `map`, which must outlive it unchanged.
class native_map {
  public:
    explicit native_map(OruMap* map);

    // Return what the map holds, ascending by the bytes of the keys.
    std::vector<std::string> keys() const;
    std::vector<native_entry> entries() const;

    // Returns the bus's own code of the kind of the value under `key`, which must be there.
    unsigned kind_code(std::string_view key) const;

    // Returns the map as the text of one JSON object, as the bus library writes it. Throws a
    // std::runtime_error with the bus library's message when that fails.
    std::string to_json() const;

  private:
    friend class native_table;
    const void* map_;
};

// A table of names and values that is handed to the bus library as one of its maps, for its JSON
// text. The maps that values were inserted from must outlive it unchanged.
class native_table {
  public:
    native_table();
    ~native_table();

    // Stores a copy of `text`, in place of what was under `name`.
    void assign(std::string_view name, std::string_view text);

    // Takes in the value that `from` holds under `key`, its kind included, unless there is
    // something under `name` already. The key must be there.
    void insert(std::string_view name, const native_map& from, std::string_view key);

    // As native_map::to_json().
    std::string to_json() const;

  private:
    struct content;
    std::unique_ptr<content> content_;
};

// --- Pairs, resolutions, lists ------------------------------------------------------------------

// Returns the two halves of what oru_map_get_pair32u() returned.
native_pair halves_of(std::uint64_t pair);

// Pixels.
struct native_resolution {
    std::uint32_t width;
    std::uint32_t height;
};

// Returns how many resolutions there are in the set that oru_channel_get_resolutions() returned,
// which must not be NULL.
std::uint64_t native_resolution_count(const void* set);

// Returns the first of them, so many at most. Throws a std::length_error that tells their number
// when no memory could hold so many.
std::vector<native_resolution> native_resolutions(
    const void* set, std::uint64_t most = std::numeric_limits<std::uint64_t>::max());

// Returns the object in a list's link, which stays the list's.
template <class Object>
Object* object_in(const GList* link) {
    return static_cast<Object*>(link->data);
}

// Takes the object out of a list's link, which then holds NULL.
template <class Object>
owned_object<Object> take_object(GList* link) {
    return owned_object<Object>{static_cast<Object*>(std::exchange(link->data, nullptr))};
}
