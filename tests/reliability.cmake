# The tests that docs/reliability.md tells about, beside those that show what the tools print.
add_subdirectory(fuzz)

# Every report number.
add_executable(every-number report/every_number.cpp)
target_link_libraries(every-number PRIVATE report oru-warnings)
add_test(NAME every-number.sample COMMAND every-number 4001)

# Every write, every argument.
oru_add_test(arguments_test SOURCES applet/arguments_test.cpp LIBS run-tools)
oru_add_test(writes_test SOURCES applet/writes_test.cpp LIBS run-tools)
target_compile_definitions(writes_test PRIVATE ORU_EXAMPLES_DIR="${PROJECT_SOURCE_DIR}/examples")

# Snapshots that nobody means well.
if(ORU_CLIENT STREQUAL snapshot)
    oru_add_test(hostile_snapshot_test SOURCES video/hostile_snapshot_test.cpp LIBS run-tools oru)
    add_dependencies(hostile_snapshot_test oru-snapshot)
endif()
