// The message bus's native dictionary as a device's own library may declare it: a std::map. It
// shares with src/video/qwire.h only the names that the tools need: qw::map and its to_json().
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace qw {

// The tools know the codes of the two narrow kinds. The others are the bus's own.
enum : std::uint16_t {
    tag_u16 = 7,
    tag_u32 = 8,
    tag_i64 = 20,
    tag_real = 21,
    tag_flag = 30,
    tag_text = 40,
    tag_pair = 50,
    tag_raw = 99,  // only its JSON text is available
};

struct raw_json {
    std::string text;
};

// A value and its kind. The alternative of `content` follows from `tag`: a std::uint64_t has the
// kind tag_u16 or tag_u32.
struct tagged {
    std::uint16_t tag;
    std::variant<std::uint64_t, std::int64_t, double, bool, std::string,
                 std::pair<std::uint32_t, std::uint32_t>, raw_json>
        content;
};

// Orders keys by their bytes, unless a test plants a fault.
struct key_order {
    bool operator()(const std::string& one, const std::string& other) const;
};

class map : public std::map<std::string, tagged, key_order> {
  public:
    using by_key = std::map<std::string, tagged, key_order>;
    using by_key::by_key;

    // As the std::map's own, but logged.
    const_iterator find(const std::string& key) const;

    // Replaces `out` by the map as the text of one JSON object. Returns the error, if any.
    std::optional<std::string> to_json(std::string& out) const;
};

}  // namespace qw
