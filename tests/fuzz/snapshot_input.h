// What the targets that feed a snapshot have in common: the client library answers from the input,
// and what a section prints is kept instead of printed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Makes the client library read its snapshot again, from a file that holds `input`.
void answer_from(std::string_view input);

// Whether the mode's map holds a value that is nested deeper than the document about the device is
// printed: that breaks off there.
bool mode_breaks_off();

// How a section went.
struct outcome {
    std::string out;                   // what it printed
    std::optional<std::string> fatal;  // the error line with which it would have ended the process
    std::optional<std::string> exception;  // the text of a std::runtime_error that it let out
};
outcome run_section(void (*section)());
