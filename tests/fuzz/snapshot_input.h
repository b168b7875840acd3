// Shared by the targets whose input is a snapshot: the client library answers from the input, and
// the output of a section is captured.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Makes the client library read a new snapshot, whose text is `input`.
void answer_from(std::string_view input);

// Returns whether the mode's map contains a value that is nested too deep for the document about
// the device: the document then ends in the middle of that value.
bool mode_breaks_off();

// The result of a section.
struct outcome {
    std::string out;                       // its output
    std::optional<std::string> fatal;      // error line of a fatal exit
    std::optional<std::string> exception;  // text of a std::runtime_error it threw
};
outcome run_section(void (*section)());
