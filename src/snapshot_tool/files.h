// The FILE arguments of the commands. Only our own client reads snapshots: when the program is
// built with a device's, no_files.cpp stands in the place of files.cpp and check.cpp and refuses
// them.
#pragma once

// Makes the client answer from FILE, "-" for standard input; to be called before its first
// question. Returns false, having said why on standard error, when it cannot be asked to: the
// command's exit status is then 2.
bool answer_from(const char* file);

// Returns the path that a FILE stands for.
const char* path_of(const char* file);
