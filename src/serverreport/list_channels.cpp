#include <memory>
#include <string>

#include <oru.h>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/channel_list.h"
#include "serverreport/crop.h"
#include "serverreport/sections.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// Returns the channel's crop. All figures are 0 if one of the two queries fails.
crop crop_of(OruChannel* channel) {
    crop rectangle;
    if (oru_channel_get_crop(channel, &rectangle.x, &rectangle.y, &rectangle.width,
                             &rectangle.height, nullptr) != FALSE &&
        oru_channel_get_crop_max(channel, &rectangle.max_width, &rectangle.max_height, nullptr) !=
            FALSE) {
        return rectangle;
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
        // Before the query: if it fails, its message gets a line of its own.
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
