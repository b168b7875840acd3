#include "snapshot/failures.h"

namespace snapshot {

failure read_failure_text(json_reader& in) {
    return {in.string("the text of a failure").text.data()};
}

failure read_failure(json_reader& in, std::string_view what) {
    in.peek();
    const char* begin = in.place();
    std::optional<failure> failure;
    in.object(what, [&](const word& name) {
        if (name.text != error_member) {
            refuse_unknown(name);
        }
        if (failure) {
            refuse_duplicate(name);
        }
        failure = read_failure_text(in);
    });
    if (!failure) {
        throw complaint{begin, expected(what) + ", found an empty object"};
    }
    return *failure;
}

}  // namespace snapshot
