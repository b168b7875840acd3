# The tests that docs/reliability.md describes, except those of what the tools print.
if(NOT ORU_MUTATE)
    add_subdirectory(fuzz)
endif()

# All 32-bit numbers of reports; ctest runs a sample.
add_executable(every-number report/every_number.cpp)
target_link_libraries(every-number PRIVATE report oru-warnings)
add_test(NAME every-number.sample COMMAND every-number 4001)

# Writes that fail, and arguments of all forms.
oru_add_tool_test(arguments_test SOURCES applet/arguments_test.cpp)
oru_add_tool_test(writes_test SOURCES applet/writes_test.cpp)

# Hostile snapshots.
if(ORU_CLIENT STREQUAL snapshot)
    oru_add_test(hostile_snapshot_test SOURCES snapshot/hostile_snapshot_test.cpp LIBS run-tools oru)
    # Files of 1 MiB and a quarter of that. Eight times the time, because short runs vary more.
    add_test(NAME growth
             COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/growth.py
                     ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} 1048576 8)
    set_tests_properties(growth PROPERTIES COST 20)
endif()

# Leak tests: a preloaded library counts live objects, and valgrind checks memory (sanitizer builds check
# it themselves).
oru_add_tool_test(live_objects_test SOURCES applet/live_objects_test.cpp)
find_program(VALGRIND valgrind)
if(VALGRIND AND NOT ORU_SANITIZE AND NOT ORU_COVERAGE)
    # These run what all examples run.
    set(snapshots ${PROJECT_SOURCE_DIR}/examples/failing-device.json
        ${PROJECT_SOURCE_DIR}/examples/healthy-encoder.json
        ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/seeds/snapshot/full.json
        ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/seeds/snapshot/everything-fails.json
        ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/seeds/snapshot/not-finite.json)
    add_test(NAME valgrind
             COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/valgrind.sh ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
                     ${snapshots})
    set_tests_properties(valgrind PROPERTIES COST 100)
endif()
