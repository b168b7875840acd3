// The names of the service's video formats.
#pragma once

#include <cstdint>
#include <string>

// Returns the nick of a video format's number, or "n/a" if the service's enumeration does not
// contain the number. It is not converted to the type OruFormat, which may be too narrow.
std::string format_to_name(std::uint32_t format);
