// Reads maps, whose values say their kind by the form in which they are written.
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

    // Reads a map that is no answer, so that no failure can stand in its place.
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
    // Used again by every map, so that they grow only for the largest.
    named_items<entry, &entry::key> entries_;
    std::string bytes_;
};

}  // namespace snapshot
