# Fails early, with one line that says which headers the compiler lacks.
include(CheckCXXSourceCompiles)

set(CMAKE_REQUIRED_FLAGS -std=c++23)
foreach(header expected format print)
    string(TOUPPER ${header} feature)
    check_cxx_source_compiles("#include <version>
#ifndef __cpp_lib_${header}
#error
#endif
int main() {}" ORU_HAVE_${feature})
    if(NOT ORU_HAVE_${feature})
        message(FATAL_ERROR
            "${CMAKE_CXX_COMPILER} (${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}) has no <${header}>. "
            "Debian 12: clang 19 with libc++; Debian 13: g++ 14. Run scripts/setup, then a preset.")
    endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)
