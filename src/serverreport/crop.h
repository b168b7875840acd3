// A crop rectangle as the channel and the input section report it.
#pragma once

#include <cstdint>
#include <string>

#include "report/json.h"

// Pixels.
struct crop {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t max_width = 0;
    std::uint32_t max_height = 0;
};

// Returns the record of a channel or input that can be cropped, under its name such as id/0.
json crop_record(std::uint32_t number, const crop& crop);

// Returns the record of one that cannot.
json no_crop_record(std::uint32_t number);
