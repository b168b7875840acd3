// A crop rectangle as the channel and the input section report it.
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

// What is printed of it, members in their order; without the figures where there is no crop.
struct crop_state {
    std::string_view crop;
    std::optional<double> height = {}, maxheight = {}, maxwidth = {}, width = {}, x = {}, y = {};
};

// A state under the name of its channel or input, such as id/0.
using crop_record = std::map<std::string, crop_state>;

// Returns the record of a channel or input that can be cropped.
crop_record crop_record_of(std::uint32_t number, const crop& crop);

// Returns the record of one that cannot.
crop_record no_crop_record_of(std::uint32_t number);
