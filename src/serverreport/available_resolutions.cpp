#include <memory>
#include <string>
#include <vector>

#include <oru.h>

#include "report/output.h"
#include "serverreport/channel_list.h"
#include "serverreport/sections.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// A comma follows the first resolution even if it is the only one. The readers of the report rely
// on it.
void print_resolutions(const std::vector<native_resolution>& resolutions) {
    for (std::size_t index = 0; index < resolutions.size(); ++index) {
        print(std::to_string(resolutions[index].width) + 'x' +
              std::to_string(resolutions[index].height));
        if (index == 0 || index + 1 < resolutions.size()) {
            print(",");
        }
    }
}

}  // namespace

void list_available_resolutions() {
    const owned_object_list channels = all_channels();
    if (channels == nullptr) {
        return;
    }

    print_section_header("Available resolutions");
    print("{\n");
    print("    \"available_resolutions\" : [\n");
    for (const GList* link = channels.get(); link != nullptr; link = link->next) {
        OruChannel* channel = object_in<OruChannel>(link);
        const owned_object<OruMap> filter{oru_map_new()};
        if (filter == nullptr) {
            g_print("Failed to create new OruMap.\n");
            return;
        }
        oru_map_set_string(filter.get(), "select", "available");
        print("        {\"channel\":\"" + std::to_string(oru_channel_get_id(channel)) + "\",");
        owned_error error;
        owned_block resolutions{
            oru_channel_get_resolutions(channel, filter.get(), std::out_ptr(error))};
        if (resolutions == nullptr) {
            g_print("\nFailed to get resolutions: %s\n", message_of(error.get()));
            return;
        }
        print("\"resolutions\":\"");
        print_resolutions(native_resolutions(resolutions.get()));
        resolutions.reset();
        print("\"}");
        print(link->next != nullptr ? ",\n" : "\n");
    }
    print("    ]\n}");
    print_section_end();
}
