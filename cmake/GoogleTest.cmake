# GoogleTest, built with our own compiler and C++ library from Debian's source package: the packaged
# binary is built with the other one.
set(BUILD_GMOCK OFF CACHE INTERNAL "")
set(INSTALL_GTEST OFF CACHE INTERNAL "")
add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
include(GoogleTest)

set(ORU_TEST_TIMEOUT 300)  # seconds
if(CMAKE_CROSSCOMPILING)
    set(ORU_TEST_TIMEOUT 3000)  # an emulator's
endif()

# oru_add_test(name SOURCES file... LIBS library... [PROPERTIES property value...]): a test program;
# ctest runs each of its tests, with these properties.
function(oru_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBS;PROPERTIES")
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest_main oru-warnings)
    gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT ${ORU_TEST_TIMEOUT} ${ARG_PROPERTIES})
endfunction()

# oru_repeat_test(name prefix PROPERTIES property value... [EXCEPT pattern...]): runs the tests of a
# test program again, with these properties, as `prefix`.NAME; without those that a pattern names,
# which stand as in --gtest_filter.
function(oru_repeat_test name prefix)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "PROPERTIES;EXCEPT")
    list(JOIN ARG_EXCEPT ":" except)
    gtest_discover_tests(${name} TEST_PREFIX ${prefix}.${name}. DISCOVERY_MODE PRE_TEST
        TEST_FILTER "-${except}" PROPERTIES TIMEOUT ${ORU_TEST_TIMEOUT} ${ARG_PROPERTIES})
endfunction()
