// The C++ runtime tells the type of an exception that nothing caught through its demangler: a fifth
// of a tool's code and most of what is relocated at each start, for a word on the way to abort().
// Whatever is linked with this does without, and that word is the name that the compiler knows.

#include <cstddef>

#include <cxxabi.h>

namespace __cxxabiv1 {

char* __cxa_demangle(const char*, char*, std::size_t*, int* status) {
    constexpr int no_such_name = -2;
    if (status != nullptr) {
        *status = no_such_name;
    }
    return nullptr;
}

}  // namespace __cxxabiv1
