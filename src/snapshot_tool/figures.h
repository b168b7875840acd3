// How figures of a device are written for a person.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Each returns the text of one figure: 1920x1080; 1920x1080 at 0,0; 5.99 Mbit/s, of bits a second;
// 29.97, of frames a second.
std::string resolution_text(const resolution& resolution);
std::string rectangle_text(const rectangle& area);
std::string bit_rate_text(std::uint32_t bits);
std::string frame_rate_text(double frames);

// Returns a text of the service, made printable and cut to that many columns; an empty one as two
// quotes.
std::string short_text(std::size_t columns, std::string_view text);

// Returns what is told in the place of what was not answered, printable.
std::string failure_text(std::string_view of, std::string_view reason);

}  // namespace snapshot_tool
