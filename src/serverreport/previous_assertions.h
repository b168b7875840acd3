// The server report's first section: what the signal processor asserted in earlier runs.
#pragma once

// Prints the device's record of those assertions as compact JSON; nothing when there is no record.
// A record that is not valid JSON, comments allowed, is printed as it stands.
void print_previous_assertions();
