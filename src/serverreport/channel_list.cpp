#include "serverreport/channel_list.h"

#include <memory>

#include <oru.h>

#include "report/output.h"
#include "video/error_message.h"

owned_object_list all_channels() {
    owned_error error;
    owned_object_list channels{oru_channel_get_all(std::out_ptr(error))};
    if (channels == nullptr && error != nullptr) {
        g_print("Failed to get all channels: %s\n", message_of(error.get()));
    } else if (channels == nullptr) {
        g_print("No channels.\n");
    }
    return channels;
}
