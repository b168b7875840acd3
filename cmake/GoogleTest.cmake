# GoogleTest, built from Debian's source package with our compiler and C++ library. Debian's library is
# built with libstdc++.
set(BUILD_GMOCK OFF CACHE INTERNAL "")
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(CMAKE_DISABLE_FIND_PACKAGE_Python ON)  # only its own tests need it
add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
include(GoogleTest)

# The main function of all test programs, and their precompiled header.
add_library(test-main OBJECT /usr/src/googletest/googletest/src/gtest_main.cc)
target_link_libraries(test-main PUBLIC GTest::gtest PRIVATE oru-warnings)
target_precompile_headers(test-main PRIVATE <gtest/gtest.h>)
# The files that use the precompiled header belong to programs, so it needs the same flags.
set_target_properties(test-main PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(test-main PRIVATE ${CMAKE_CXX_COMPILE_OPTIONS_PIE})

# oru_add_test(name SOURCES file... LIBS library... [PROPERTIES property value...]) adds a test program
# that links our code. ctest runs each of its tests, with these properties.
function(oru_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBS;PROPERTIES")
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} test-main oru-warnings)
    target_precompile_headers(${name} REUSE_FROM test-main)
    # Tests of different files use the same names.
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
    oru_discover_tests(${name} ${name} PROPERTIES ${ARG_PROPERTIES})
endfunction()

# oru_add_tool_test(name SOURCES file... [PROPERTIES property value...]) adds a test program that only
# starts our programs. If ORU_TOOL_TESTS is set, ctest runs the test program in that folder instead.
add_custom_target(tool-tests)
function(oru_add_tool_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;PROPERTIES")
    if(ORU_TOOL_TESTS)
        add_executable(${name} IMPORTED)
        set_target_properties(${name} PROPERTIES IMPORTED_LOCATION ${ORU_TOOL_TESTS}/${name})
        oru_discover_tests(${name} ${name} PROPERTIES ${ARG_PROPERTIES})
    else()
        oru_add_test(${name} SOURCES ${ARG_SOURCES} LIBS run-tools PROPERTIES ${ARG_PROPERTIES})
        add_dependencies(tool-tests ${name})
    endif()
endfunction()

# oru_discover_tests(name prefix [PROPERTIES property value...] [FILTER filter]) makes ctest run the
# tests of a test program as `prefix`.NAME, with these properties: all, or those that the filter selects.
function(oru_discover_tests name prefix)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "FILTER" "PROPERTIES")
    gtest_discover_tests(${name} TEST_PREFIX ${prefix}. TEST_FILTER "${ARG_FILTER}"
        DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${ARG_PROPERTIES})
endfunction()
