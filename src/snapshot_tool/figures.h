// The figures of a device as text for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Return texts such as 1920x1080; 1920x1080 at 0,0; 5.99 Mbit/s, from bits a second; 29.97, from
// frames a second; 128.0, from bytes.
std::string resolution_text(const resolution& resolution);
std::string rectangle_text(const rectangle& area);
std::string bit_rate_text(std::uint32_t bits);
std::string frame_rate_text(double frames);
std::string mebibytes_text(std::uint32_t bytes);

// Return a text of the service, printable; the second cuts it to at most this many columns. An
// empty text becomes two quotes.
std::string whole_text(std::string_view text);
std::string short_text(std::size_t columns, std::string_view text);

// Returns a printable line in place of the answer to a query.
std::string failure_text(std::string_view query, std::string_view reason);

}  // namespace snapshot_tool
