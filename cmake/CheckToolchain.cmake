# Fails early, with one line that says which headers the compiler lacks.
include(CheckCXXSourceCompiles)

set(CMAKE_REQUIRED_FLAGS -std=c++23)
check_cxx_source_compiles("#include <format>
int main() { return std::format(\"{}\", 1).size() == 1 ? 0 : 1; }" ORU_HAVE_FORMAT)
check_cxx_source_compiles("#include <print>
int main() { std::print(stdout, \"{}\", 1); }" ORU_HAVE_PRINT)
check_cxx_source_compiles("#include <expected>
int main() { return std::expected<int, int>{0}.value(); }" ORU_HAVE_EXPECTED)
unset(CMAKE_REQUIRED_FLAGS)

foreach(feature FORMAT PRINT EXPECTED)
    if(NOT ORU_HAVE_${feature})
        string(TOLOWER ${feature} header)
        message(FATAL_ERROR
            "${CMAKE_CXX_COMPILER} (${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}) has no <${header}>. "
            "Debian 12: clang 19 with libc++; Debian 13: g++ 14. Run scripts/setup, then a preset.")
    endif()
endforeach()
