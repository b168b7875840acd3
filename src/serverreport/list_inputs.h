// The server report's section about the video inputs and how they are cropped.
#pragma once

// Prints the section. A failing query ends it with a line on standard output.
void list_inputs();
