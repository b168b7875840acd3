// The message bus's native dictionary: an ordered map from text to a value that knows its own kind.
// It is what backs an OruMap.
#ifndef QWIRE_H
#define QWIRE_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace qw {

// The codes are the bus's own.
enum class kind : std::uint8_t {
    boolean = 1,
    string = 2,
    int64 = 3,
    float64 = 4,
    pair32u = 5,
    other = 6,
    uint16 = 7,
    uint32 = 8,
};

using pair32u = std::pair<std::uint32_t, std::uint32_t>;

// A value of a kind that has no C++ type here: its JSON text, which is all that is known of it.
struct other {
    std::string_view json;

    bool operator==(const other&) const = default;
};

// A tagged value in 16 bytes. A text is a view, shorter than 4 GiB and followed in memory by a
// NUL, of text that whoever hands the value out keeps alive: for an entry of a map, the map. Texts
// hold no NUL themselves.
class value {
  public:
    // NOLINTBEGIN(google-explicit-constructor): a value is written as what it holds
    value(bool held) : bits_(held), kind_(qw::kind::boolean) {}
    value(std::string_view held)
        : text_(held.data()),
          length_(static_cast<std::uint32_t>(held.size())),
          kind_(qw::kind::string) {}
    value(std::int64_t held) : bits_(static_cast<std::uint64_t>(held)), kind_(qw::kind::int64) {}
    value(double held) : bits_(std::bit_cast<std::uint64_t>(held)), kind_(qw::kind::float64) {}
    value(other held)
        : text_(held.json.data()),
          length_(static_cast<std::uint32_t>(held.json.size())),
          kind_(qw::kind::other) {}
    value(pair32u held)
        : bits_(std::uint64_t{held.second} << 32 | held.first), kind_(qw::kind::pair32u) {}
    value(std::uint16_t held) : bits_(held), kind_(qw::kind::uint16) {}
    value(std::uint32_t held) : bits_(held), kind_(qw::kind::uint32) {}
    // NOLINTEND(google-explicit-constructor)
    value(const char*) = delete;  // would become a boolean

    qw::kind kind() const noexcept { return kind_; }

    // Returns the held value, or nothing when it is of another kind than T.
    template <class T>
    std::optional<T> get_if() const noexcept {
        if (kind_ != value(T{}).kind_) {
            return std::nullopt;
        }
        if constexpr (std::is_same_v<T, std::string_view>) {
            return std::string_view(text_, length_);
        } else if constexpr (std::is_same_v<T, other>) {
            return other{{text_, length_}};
        } else if constexpr (std::is_same_v<T, double>) {
            return std::bit_cast<double>(bits_);
        } else if constexpr (std::is_same_v<T, qw::pair32u>) {
            return qw::pair32u(static_cast<std::uint32_t>(bits_),
                               static_cast<std::uint32_t>(bits_ >> 32));
        } else {
            return static_cast<T>(bits_);
        }
    }

  private:
    union {
        std::uint64_t bits_;
        const char* text_;
    };
    std::uint32_t length_ = 0;  // of the text, when it is one
    qw::kind kind_;
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
