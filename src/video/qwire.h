// The message bus's native dictionary: an ordered map from texts to tagged values. It backs an
// OruMap.
#ifndef QWIRE_H
#define QWIRE_H

#include <cstddef>
#include <expected>
#include <memory>
#include <string>
#include <string_view>

#include "snapshot/value.h"

namespace qw {

using snapshot::kind;
using snapshot::other;
using snapshot::pair32u;
using snapshot::value;

// A dictionary in ascending byte order of its keys. A copy shares its content with the original
// until one of the two is changed.
class map {
  public:
    using entry = snapshot::entry;

    map() = default;

    // The entries must be in ascending order of their keys, all different. They are not copied:
    // `owner` owns them and their texts, which must not change.
    map(const entry* entries, std::size_t count, std::shared_ptr<const void> owner);

    // The entries in order. The pointers are valid until the map is changed.
    const entry* begin() const noexcept;
    const entry* end() const noexcept;
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }

    // Returns the value under `key`, or NULL. The pointer is valid until the map is changed.
    const qw::value* find(std::string_view key) const noexcept;

    // Stores a copy of `value` and its text, and returns true. If the map already contains the key,
    // it is not changed and the result is false.
    bool insert(std::string_view key, const qw::value& value);

    // Stores a copy of `value` and its text, and replaces an existing value.
    void assign(std::string_view key, const qw::value& value);

    // These remove the entry under `key`, or every entry whose key starts with `prefix`.
    void erase(std::string_view key);
    void erase_prefix(std::string_view prefix);

    // Returns the map of the entries whose keys start with `prefix`.
    map filter_prefix(std::string_view prefix) const;

    // Replaces `out` by the map as a JSON object, in compact form and in the order of the map.
    // Bytes of a string that are not valid UTF-8 are copied. Fails without changing `out` if a
    // double is not finite; the error names the key.
    std::expected<void, std::string> to_json(std::string& out) const;

  private:
    struct content;

    // Returns content that no other map shares, with the entries in a vector, so that it can be
    // changed.
    content& own();

    std::shared_ptr<content> content_;
};

}  // namespace qw

#endif
