#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include <oru.h>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/crop.h"
#include "serverreport/sections.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

owned_object_list input_channels() {
    const owned_object<OruMap> filter{oru_map_new()};
    if (filter == nullptr) {
        g_print("Failed to create new OruMap.\n");
        return nullptr;
    }
    oru_map_set_string(filter.get(), "key", "input");
    owned_error error;
    owned_object_list channels{oru_channel_get_filtered(filter.get(), std::out_ptr(error))};
    if (channels == nullptr && error != nullptr) {
        g_print("Failed to get inputs: %s\n", message_of(error.get()));
    } else if (channels == nullptr) {
        g_print("No inputs.\n");
    }
    return channels;
}

// Returns the input's record, or nothing if the query for its crop rectangle fails.
std::optional<crop_record> record_of(std::uint32_t number, OruInput* input, OruMap* info) {
    if (oru_map_get_boolean(info, "crop.possible", FALSE) == FALSE) {
        return no_crop_record_of(number);
    }
    crop rectangle;
    if (oru_input_get_crop(input, &rectangle.x, &rectangle.y, &rectangle.width, &rectangle.height,
                           nullptr) == FALSE) {
        return std::nullopt;
    }
    constexpr std::uint64_t no_maximum = std::numeric_limits<std::uint64_t>::max();
    const auto [width, height] = halves_of(oru_map_get_pair32u(info, "crop.max", no_maximum));
    rectangle.max_width = width;
    rectangle.max_height = height;
    return crop_record_of(number, rectangle);
}

}  // namespace

void list_inputs() {
    const owned_object_list channels = input_channels();
    if (channels == nullptr) {
        return;
    }

    print_section_header("Snapshot of input settings");
    print("{\n");
    print("    \"inputs\" : [\n");
    std::string text;
    for (GList* link = channels.get(); link != nullptr; link = link->next) {
        const auto channel = take_object<OruChannel>(link);
        owned_error error;
        const owned_object<OruMap> channel_info{
            oru_channel_get_info(channel.get(), std::out_ptr(error))};
        if (channel_info == nullptr) {
            g_print("Failed to get channel info: %s\n", message_of(error.get()));
            return;
        }
        const std::uint32_t number = oru_map_get_uint32(channel_info.get(), "type.id", 1);
        const owned_object<OruInput> input{oru_input_new(number, std::out_ptr(error))};
        if (input == nullptr) {
            g_print("Failed to get input %u: %s\n", number, message_of(error.get()));
            return;
        }
        const owned_object<OruMap> info{oru_input_get_info(input.get(), std::out_ptr(error))};
        if (info == nullptr) {
            g_print("Failed to get input info: %s\n", message_of(error.get()));
            return;
        }
        const std::optional<crop_record> record = record_of(number, input.get(), info.get());
        if (!record || !write_compact(*record, text)) {
            continue;
        }
        print("        ");
        print(text);
        print(link->next != nullptr ? ",\n" : "\n");
    }
    print("    ]\n}");
    print_section_end();
}
