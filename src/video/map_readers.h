// Reads that the typed getters of OruMap do not offer.
#pragma once

#include <cstdint>
#include <utility>

#include <oru.h>

// Returns the value under `key` when it is a 16-bit or 32-bit unsigned one, and `def` when it is of
// any other kind or absent. `map` and `key` must not be NULL.
std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def);

// Returns the two halves of a pair that oru_map_get_pair32u() returned, its first one first.
inline std::pair<std::uint32_t, std::uint32_t> halves_of(std::uint64_t pair) {
    return {static_cast<std::uint32_t>(pair), static_cast<std::uint32_t>(pair >> 32)};
}
