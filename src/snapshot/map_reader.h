// Reads maps. The form of a value determines its kind.
#pragma once

#include <string>
#include <string_view>

#include "snapshot/answers.h"
#include "snapshot/json_reader.h"
#include "snapshot/keys.h"

namespace snapshot {

class map_reader {
  public:
    map_reader(json_reader& in, snapshot::arena& arena) : in_(in), arena_(arena) {}

    // Reads a map, or the failure in its place.
    answer<map_entries> read();

    // Reads a map that is not an answer, so that a failure cannot replace it.
    map_entries read_properties();

  private:
    void read_entry(const word& key);
    value read_value();
    value read_number();
    value read_typed_value();
    double read_double();
    std::string_view read_bytes();

    json_reader& in_;
    snapshot::arena& arena_;
    // Reused for every map, so that they are rarely reallocated.
    named_items<entry, &entry::key> entries_;
    std::string bytes_;
};

}  // namespace snapshot
