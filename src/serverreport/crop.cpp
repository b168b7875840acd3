#include "serverreport/crop.h"

#include <utility>

namespace {

json under_name(std::uint32_t number, json state) {
    json record;
    record["id/" + std::to_string(number)] = std::move(state);
    return record;
}

}  // namespace

json crop_record(std::uint32_t number, const crop& crop) {
    json state;
    state["crop"] = "Yes";
    state["maxwidth"] = crop.max_width;
    state["maxheight"] = crop.max_height;
    state["x"] = crop.x;
    state["y"] = crop.y;
    state["width"] = crop.width;
    state["height"] = crop.height;
    return under_name(number, std::move(state));
}

json no_crop_record(std::uint32_t number) {
    json state;
    state["crop"] = "No";
    return under_name(number, std::move(state));
}
