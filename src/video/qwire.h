// The message bus's native dictionary: an ordered map from texts to tagged values. It backs an
// OruMap.
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

// A value of a kind without a C++ type. Only its JSON text is known.
struct other {
    std::string_view json;

    bool operator==(const other&) const = default;
};

// A tagged value in 16 bytes. A text is a view that does not own its bytes (the map does for one of
// its entries). It is shorter than 4 GiB, contains no NUL, and a NUL follows it in memory.
class value {
  public:
    // NOLINTBEGIN(google-explicit-constructor): so that a value is written as its content
    value(bool flag) : bits_(flag), kind_(qw::kind::boolean) {}
    value(std::string_view text)
        : text_(text.data()),
          length_(static_cast<std::uint32_t>(text.size())),
          kind_(qw::kind::string) {}
    value(std::int64_t number)
        : bits_(static_cast<std::uint64_t>(number)), kind_(qw::kind::int64) {}
    value(double number) : bits_(std::bit_cast<std::uint64_t>(number)), kind_(qw::kind::float64) {}
    value(other text)
        : text_(text.json.data()),
          length_(static_cast<std::uint32_t>(text.json.size())),
          kind_(qw::kind::other) {}
    value(pair32u pair)
        : bits_(std::uint64_t{pair.second} << 32 | pair.first), kind_(qw::kind::pair32u) {}
    value(std::uint16_t number) : bits_(number), kind_(qw::kind::uint16) {}
    value(std::uint32_t number) : bits_(number), kind_(qw::kind::uint32) {}
    // NOLINTEND(google-explicit-constructor)
    value(const char*) = delete;  // would become a boolean

    qw::kind kind() const noexcept { return kind_; }

    // Returns the content, or nothing if it is not of T's kind.
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
    std::uint32_t length_ = 0;  // of a text
    qw::kind kind_;
};

// A dictionary in ascending byte order of its keys. A copy shares its content with the original
// until one of the two is changed.
class map {
  public:
    struct entry {
        std::string_view key;  // a NUL follows in memory
        qw::value value;
    };

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
