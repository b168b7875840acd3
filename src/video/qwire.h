// The message bus's native dictionary: an ordered map from text to a value that knows its own kind.
// It is what backs an OruMap.
#ifndef QWIRE_H
#define QWIRE_H

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace qw {

// The codes are the bus's own.
enum class kind : std::uint8_t {
    boolean = 1,
    string = 2,
    int64 = 3,
    float64 = 4,
    pair32u = 5,
    uint16 = 7,
    uint32 = 8,
};

using pair32u = std::pair<std::uint32_t, std::uint32_t>;

// A tagged value. A string is a view, followed in memory by a NUL, of text that whoever hands the
// value out keeps alive: for an entry of a map, the map. Texts hold no NUL themselves.
class value {
  public:
    // NOLINTBEGIN(google-explicit-constructor): a value is written as what it holds
    value(bool held) : held_(held) {}
    value(std::string_view held) : held_(held) {}
    value(std::int64_t held) : held_(held) {}
    value(double held) : held_(held) {}
    value(pair32u held) : held_(held) {}
    value(std::uint16_t held) : held_(held) {}
    value(std::uint32_t held) : held_(held) {}
    // NOLINTEND(google-explicit-constructor)
    value(const char*) = delete;  // would become a boolean

    qw::kind kind() const noexcept;

    // Returns the held value, or NULL when it is of another kind.
    template <class T>
    const T* get_if() const noexcept {
        return std::get_if<T>(&held_);
    }

    bool operator==(const value&) const = default;

  private:
    std::variant<bool, std::string_view, std::int64_t, double, pair32u, std::uint16_t,
                 std::uint32_t>
        held_;
};

// An ordered dictionary, ascending by the bytes of its keys. A copy shares its content with the
// original until one of the two is changed.
class map {
  public:
    struct entry {
        std::string_view key;  // followed in memory by a NUL
        qw::value value;
    };

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

    void erase(std::string_view key);
    void erase_prefix(std::string_view prefix);

    // Returns the map of the entries whose keys start with `prefix`.
    map filter_prefix(std::string_view prefix) const;

    // Replaces `out` by the map as the text of one JSON object, compact, members in the map's
    // order. Fails, with `out` unchanged, on a double that is not finite; the error names the key.
    std::expected<void, std::string> to_json(std::string& out) const;

  private:
    struct content;

    // The content for changing: the map's alone, and its entries in a vector of their own.
    content& own();

    std::shared_ptr<content> content_;
};

}  // namespace qw

#endif
