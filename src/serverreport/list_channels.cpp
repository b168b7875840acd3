#include "serverreport/list_channels.h"

#include <memory>
#include <string>

#include <oru.h>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/channel_list.h"
#include "serverreport/crop.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// The channel's crop, all zero when either part of it cannot be had.
crop crop_of(OruChannel* channel) {
    crop read;
    if (oru_channel_get_crop(channel, &read.x, &read.y, &read.width, &read.height, nullptr) !=
            FALSE &&
        oru_channel_get_crop_max(channel, &read.max_width, &read.max_height, nullptr) != FALSE) {
        return read;
    }
    return {};
}

}  // namespace

void list_channels() {
    const owned_object_list channels = all_channels();
    if (channels == nullptr) {
        return;
    }

    print_section_header("Snapshot of channel settings");
    print("{\n");
    print("    \"channels\" : [\n");
    bool separator_due = false;
    std::string text;
    for (const GList* link = channels.get(); link != nullptr; link = link->next) {
        // Before the query, so that its failure line has a line of its own.
        if (separator_due) {
            print(",\n");
            separator_due = false;
        }
        OruChannel* channel = object_in<OruChannel>(link);
        owned_error error;
        const owned_object<OruMap> info{oru_channel_get_info(channel, std::out_ptr(error))};
        if (info == nullptr) {
            g_print("Failed to get channel info: %s\n", message_of(error.get()));
            return;
        }
        const std::uint32_t number = oru_channel_get_id(channel);
        const bool can_crop = oru_map_get_boolean(info.get(), "crop.possible", FALSE) != FALSE;
        const crop_record record =
            can_crop ? crop_record_of(number, crop_of(channel)) : no_crop_record_of(number);
        if (!write_compact(record, text)) {
            continue;
        }
        print("        ");
        print(text);
        if (link->next == nullptr) {
            print("\n");
        } else {
            separator_due = true;
        }
    }
    print("    ]\n}");
    print_section_end();
}
