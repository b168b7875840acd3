// The value types of a snapshot's maps. Our qwire.h builds on them and installs this header beside
// itself.
#ifndef ORU_SNAPSHOT_VALUE_H
#define ORU_SNAPSHOT_VALUE_H

#include <bit>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace snapshot {

// The codes are the bus's own, except the last, which the bus never sees.
enum class kind : std::uint8_t {
    boolean = 1,
    string = 2,
    int64 = 3,
    float64 = 4,
    pair32u = 5,
    other = 6,
    uint16 = 7,
    uint32 = 8,
    unwritable = 255,
};

using pair32u = std::pair<std::uint32_t, std::uint32_t>;

// A value of a kind without a C++ type, as its JSON text.
struct other {
    std::string_view json;

    bool operator==(const other&) const = default;
};

// A value of such a kind without a JSON text, and why there is none. A file cannot contain it.
struct unwritable {
    std::string_view reason;

    bool operator==(const unwritable&) const = default;
};

// A tagged value in 16 bytes. A text is a view, shorter than 4 GiB and followed in memory by a NUL,
// of text that the provider of the value keeps alive: for an entry of a map, the map.
class value {
  public:
    // NOLINTBEGIN(google-explicit-constructor): values are written as their content
    value(bool flag) : bits_(flag), kind_(snapshot::kind::boolean) {}
    value(std::string_view text) : value(text, snapshot::kind::string) {}
    value(std::int64_t number)
        : bits_(static_cast<std::uint64_t>(number)), kind_(snapshot::kind::int64) {}
    value(double number)
        : bits_(std::bit_cast<std::uint64_t>(number)), kind_(snapshot::kind::float64) {}
    value(other unknown) : value(unknown.json, snapshot::kind::other) {}
    value(unwritable unknown) : value(unknown.reason, snapshot::kind::unwritable) {}
    value(pair32u pair)
        : bits_(std::uint64_t{pair.second} << 32 | pair.first), kind_(snapshot::kind::pair32u) {}
    value(std::uint16_t number) : bits_(number), kind_(snapshot::kind::uint16) {}
    value(std::uint32_t number) : bits_(number), kind_(snapshot::kind::uint32) {}
    // NOLINTEND(google-explicit-constructor)
    value(const char*) = delete;  // would become a boolean

    snapshot::kind kind() const noexcept { return kind_; }

    // Returns the content, or nothing if it is of another kind than T.
    template <class T>
    std::optional<T> get_if() const noexcept {
        if (kind_ != value(T{}).kind_) {
            return std::nullopt;
        }
        if constexpr (std::is_same_v<T, std::string_view>) {
            return std::string_view(text_, length_);
        } else if constexpr (std::is_same_v<T, other> || std::is_same_v<T, unwritable>) {
            return T{{text_, length_}};
        } else if constexpr (std::is_same_v<T, double>) {
            return std::bit_cast<double>(bits_);
        } else if constexpr (std::is_same_v<T, snapshot::pair32u>) {
            return snapshot::pair32u(static_cast<std::uint32_t>(bits_),
                                     static_cast<std::uint32_t>(bits_ >> 32));
        } else {
            return static_cast<T>(bits_);
        }
    }

  private:
    value(std::string_view text, snapshot::kind kind)
        : text_(text.data()), length_(static_cast<std::uint32_t>(text.size())), kind_(kind) {}

    union {
        std::uint64_t bits_;
        const char* text_;
    };
    std::uint32_t length_ = 0;  // of the text
    snapshot::kind kind_;
};

// Returns the value as a T if it is of T's own kind, or of an unsigned kind that widens into T
// without loss.
template <class T>
std::optional<T> widened(const value& value) noexcept {
    if constexpr (std::is_arithmetic_v<T>) {
        if (value.kind() == kind::uint16) {
            return static_cast<T>(*value.get_if<std::uint16_t>());
        }
        if (value.kind() == kind::uint32) {
            return static_cast<T>(*value.get_if<std::uint32_t>());
        }
    }
    return value.get_if<T>();
}

struct entry {
    std::string_view key;  // followed in memory by a NUL
    snapshot::value value;
};

}  // namespace snapshot

#endif
