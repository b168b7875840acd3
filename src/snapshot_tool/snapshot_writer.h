// The text of a snapshot in the layout of a recording: a member a line, so that two recordings can
// be compared line by line.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "video/native.h"

// What a snapshot has no form for; says what that is.
struct not_recordable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Puts the document together. The document's own object is open from the beginning.
class snapshot_writer {
  public:
    // Open an object or array as a member of the open object, or an object as the next element of
    // the open array.
    void open_object(std::string_view name);
    void open_array(std::string_view name);
    void open_element();
    void close();

    // Writes a member of the open object. `form` is what one of the functions below returned.
    void member(std::string_view name, std::string_view form);

    // Closes the document. Throws a not_recordable when it is longer than a snapshot may be.
    std::string finish();

  private:
    void begin_item();
    void open(char bracket);

    std::string text_ = "{";
    std::string open_ = "}";  // what closes each object and array that is open, the innermost last
};

// --- Forms --------------------------------------------------------------------------------------
//
// Each returns the JSON text of a value. One of several lines begins in the first column.

// Throws a not_recordable, which calls the text `what`, when it is no UTF-8 or holds a NUL.
std::string text_form(std::string_view text, std::string_view what);

std::string failure_form(std::string_view message);  // of which this is the form
std::string number_form(std::uint32_t number);
std::string numbers_form(std::initializer_list<std::uint32_t> numbers);
std::string resolutions_form(const std::vector<native_resolution>& resolutions);

// The value of a map's entry, in the shortest form that gives its kind back; nothing when it is of
// a kind that no getter reads. Throws a not_recordable when there is no form for it.
std::optional<std::string> value_form(const native_entry& entry);

// A value of a kind that no getter reads, of which `json` is the text.
std::string other_form(std::string_view json);

// The keys of a map, ascending by their bytes and all different, each with the form of its value.
using map_rows = std::vector<std::pair<std::string, std::string>>;
std::string map_form(const map_rows& rows);
