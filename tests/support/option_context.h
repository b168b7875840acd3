// Intercepts (by the linker's --wrap) the calls that create and release an option context and
// release an error. Each release is reported on standard error.
#pragma once

// While this is set, creating an option context fails.
extern bool option_context_fails;
