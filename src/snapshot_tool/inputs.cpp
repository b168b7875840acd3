#include "snapshot_tool/inputs.h"

#include <string_view>
#include <variant>
#include <vector>

#include "snapshot/lookup.h"

namespace snapshot_tool {
namespace {

std::uint32_t number_or_1(snapshot::map_entries map, std::string_view key) {
    const snapshot::value* value = snapshot::find(map, key);
    return value != nullptr ? snapshot::widened<std::uint32_t>(*value).value_or(1) : 1;
}

}  // namespace

std::uint32_t input_count(snapshot::map_entries channel_info) {
    return number_or_1(channel_info, "input.count");
}

std::uint32_t input_number(snapshot::map_entries info) {
    return number_or_1(info, "type.id");
}

std::set<std::uint32_t> named_inputs(const snapshot::answers& answers) {
    std::set<std::uint32_t> numbers;
    if (const auto* channels =
            std::get_if<std::vector<snapshot::channel_record>>(&answers.channels_filtered)) {
        for (const snapshot::channel_record& channel : *channels) {
            if (const auto* info = std::get_if<snapshot::map_entries>(&channel.info)) {
                numbers.insert(input_number(*info));
            }
        }
    }
    return numbers;
}

}  // namespace snapshot_tool
