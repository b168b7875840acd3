// What is wrong with a device.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Returns whether more than one frame in a thousand failed.
bool fails_frames(const stream& stream);

// Returns whether a stream that has run for 10 seconds or more reaches less than nine tenths of the
// requested frame rate, rounded down.
bool is_slow(const stream& stream);

// Returns whether more than nine tenths of what is allowed is in use.
bool is_nearly_used_up(figure used, const outcome<figure>& allowed);

// The numbers that streams and channels may name.
class listed_numbers {
  public:
    explicit listed_numbers(const device& device);

    // Return whether a channel, or an input, of this number is in the list, or the list is not
    // known.
    bool has_channel(std::uint32_t id) const;
    bool has_input(std::uint32_t number) const;

  private:
    outcome<std::vector<std::uint32_t>> channels_;  // ascending
    outcome<std::uint32_t> input_count_;
};

// Return whether something in the row of an object is a problem.
bool has_problem(const stream& stream, const listed_numbers& listed);
bool has_problem(const channel& channel);
bool has_problem(const input& input);

// Returns a printable line for each problem, the worst first.
std::vector<std::string> problems_of(const device& device);

}  // namespace snapshot_tool
