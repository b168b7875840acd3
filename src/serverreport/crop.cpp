#include "serverreport/crop.h"

crop_record crop_record_of(std::uint32_t number, const crop& crop) {
    return {{"id/" + std::to_string(number),
             {.crop = "Yes",
              .height = crop.height,
              .maxheight = crop.max_height,
              .maxwidth = crop.max_width,
              .width = crop.width,
              .x = crop.x,
              .y = crop.y}}};
}

crop_record no_crop_record_of(std::uint32_t number) {
    return {{"id/" + std::to_string(number), {.crop = "No"}}};
}
