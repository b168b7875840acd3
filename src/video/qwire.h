// The message bus's native dictionary: an ordered map from text to a value that knows its own kind.
// It is what backs an OruMap.
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

// An ordered dictionary, ascending by the bytes of its keys. A copy shares its content with the
// original until one of the two is changed.
class map {
  public:
    using entry = snapshot::entry;

    map() = default;

    // The map of `count` entries, ascending by key and all different. They are not copied: `owner`
    // keeps them and their texts alive, and they must not change.
    map(const entry* entries, std::size_t count, std::shared_ptr<const void> owner);

    // The entries in order. The pointers live until the map is changed.
    const entry* begin() const noexcept;
    const entry* end() const noexcept;
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }

    // Returns the value under `key`, or NULL. It lives until the map is changed.
    const qw::value* find(std::string_view key) const noexcept;

    // Stores a copy of `value`, its text included, unless the key is there already: then the map
    // stays as it is and the result is false.
    bool insert(std::string_view key, const qw::value& value);

    // Stores a copy of `value`, its text included, in place of what was under `key`.
    void assign(std::string_view key, const qw::value& value);

    // These take out the entry under `key`, or every entry whose key starts with `prefix`.
    void erase(std::string_view key);
    void erase_prefix(std::string_view prefix);

    // Returns the map of the entries whose keys start with `prefix`.
    map filter_prefix(std::string_view prefix) const;

    // Replaces `out` by the map as the text of one JSON object, compact, members in the map's
    // order; bytes of strings that are no UTF-8 stay as they are. Fails, with `out` unchanged, on a
    // double that is not finite; the error names the key.
    std::expected<void, std::string> to_json(std::string& out) const;

  private:
    struct content;

    // The content for changing: the map's alone, and its entries in a vector of their own.
    content& own();

    std::shared_ptr<content> content_;
};

}  // namespace qw

#endif
