// The names of the service's video formats.
#pragma once

#include <cstdint>
#include <string>

// Returns the nick of a video format's number, or "n/a" when the service's enumeration does not
// hold it. Any number will do; it is never made a value of the enumeration, which may be too
// narrow.
std::string format_to_name(std::uint32_t format);
