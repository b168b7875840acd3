// Failures. Any answer may be replaced by one: {"$error": TEXT}.
#pragma once

#include <optional>
#include <string_view>
#include <type_traits>

#include "snapshot/answers.h"
#include "snapshot/json_reader.h"

namespace snapshot {

inline constexpr std::string_view error_member = "$error";

failure read_failure_text(json_reader& in);

// Reads a failure. A complaint about another object says that `what` was expected.
failure read_failure(json_reader& in, std::string_view what);

// Reads an answer that is an array, with `read()`, or the failure in its place.
template <class Read>
auto array_or_failure(json_reader& in, std::string_view what, Read&& read)
    -> answer<std::invoke_result_t<Read>> {
    if (in.peek() == '{') {
        return read_failure(in, what);
    }
    return read();
}

// Reads an answer that is an object of any names, with `read(name)` for the value of each, or the
// failure in its place. A failure has a text under `$error` and no other member.
template <class Read>
std::optional<failure> members_or_failure(json_reader& in, std::string_view what, Read&& read) {
    std::optional<failure> failure;
    bool has_other_members = false;
    in.object(what, [&](const word& name) {
        const bool is_failure = name.text == error_member && *in.place() == '"';
        if (failure || (is_failure && has_other_members)) {
            throw complaint{name.at, "a failure has no other member"};
        }
        if (is_failure) {
            failure = read_failure_text(in);
        } else {
            has_other_members = true;
            read(name);
        }
    });
    return failure;
}

}  // namespace snapshot
