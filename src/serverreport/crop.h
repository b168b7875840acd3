// The record of a crop rectangle, which the sections of the channels and of the inputs print.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// Pixels.
struct crop {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t max_width = 0;
    std::uint32_t max_height = 0;
};

// The members of the record in the order in which they are printed. Without crop, there are no
// figures.
struct crop_state {
    std::string_view crop;
    std::optional<double> height = {}, maxheight = {}, maxwidth = {}, width = {}, x = {}, y = {};
};

// The state under the name of its channel or input, such as id/0.
using crop_record = std::map<std::string, crop_state>;

// Return the record of a channel or input that can be cropped, and of one that cannot.
crop_record crop_record_of(std::uint32_t number, const crop& crop);
crop_record no_crop_record_of(std::uint32_t number);
