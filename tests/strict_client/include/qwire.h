// The message bus's native dictionary as a device's own library may declare it: a std::map, with no
// name in common with src/video/qwire.h but those that the tools need: qw::map and its to_json().
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace qw {

// The codes of the two narrow kinds are known to the tools; the others are the bus's own.
enum : std::uint16_t {
    tag_u16 = 7,
    tag_u32 = 8,
    tag_i64 = 20,
    tag_real = 21,
    tag_flag = 30,
    tag_text = 40,
    tag_pair = 50,
    tag_raw = 99,  // of which only the JSON text is known
};

struct raw_json {
    std::string text;
};

// A value and its kind. What `content` holds goes with `tag`: a std::uint64_t is of the kind
// tag_u16 or tag_u32.
struct tagged {
    std::uint16_t tag;
    std::variant<std::uint64_t, std::int64_t, double, bool, std::string,
                 std::pair<std::uint32_t, std::uint32_t>, raw_json>
        content;
};

// Whether a key comes before another: by its bytes, unless a test plants a fault here.
struct key_order {
    bool operator()(const std::string& one, const std::string& other) const;
};

class map : public std::map<std::string, tagged, key_order> {
  public:
    using by_key = std::map<std::string, tagged, key_order>;
    using by_key::by_key;

    // As the std::map's own, but the look-up is told to the log of calls.
    const_iterator find(const std::string& key) const;

    // Replaces `out` by the map as the text of one JSON object. Returns what was wrong, or nothing
    // when all is well.
    std::optional<std::string> to_json(std::string& out) const;
};

}  // namespace qw
