# The tests that run the tools also run with the second client library.
add_dependencies(run-tools strict-applet)
set(strict ENVIRONMENT ORU_TEST_BIN_DIR=${ORU_STRICT_BIN_DIR})
foreach(test dispatch_test arguments_test live_objects_test device_test probe_test snapshot_program_test)
    oru_discover_tests(${test} strict.${test} PROPERTIES ${strict})
endforeach()
# These have most of the tests, and skip none: each program runs all of its tests at once.
foreach(test tlm_test serverreport_test failure_matrix_test golden_test)
    add_test(NAME strict.${test} COMMAND ${test} --gtest_brief=1)
    set_tests_properties(strict.${test} PROPERTIES ${strict})
endforeach()
# Of the tests of lost output, only the one in which writes fail in the middle of sections.
oru_discover_tests(writes_test strict.writes_test FILTER writes.to_a_device_that_is_full
    PROPERTIES ${strict})
# Again with getters that widen nothing: sections that depend on a number's kind must read it natively.
foreach(test tlm_test serverreport_test golden_test)
    add_test(NAME exact.${test} COMMAND ${test} --gtest_brief=1
        --gtest_filter=-*widen*:*of_another_kind*:*_tool*.*:previous_assertions.*:channels.*:available_resolutions.*)
    set_tests_properties(exact.${test} PROPERTIES
        ${strict} ENVIRONMENT_MODIFICATION ORU_STRICT_EXACT=set:1)
endforeach()

# The calls that the sections make.
oru_add_tool_test(calls_test
    SOURCES calls/available_resolutions_test.cpp
            calls/command_line_test.cpp
            calls/error_beside_answer_test.cpp
            calls/failed_writes_test.cpp
            calls/identity_info_test.cpp
            calls/list_channels_test.cpp
            calls/list_inputs_test.cpp
            calls/list_output_test.cpp
            calls/list_streams_test.cpp
            calls/no_error_test.cpp
            calls/stream_max_stats_test.cpp
            calls/stream_quotas_test.cpp
            calls/system_info_test.cpp
            support/calls.cpp)
target_compile_definitions(calls_test PRIVATE ORU_STRICT_BIN_DIR="${ORU_STRICT_BIN_DIR}")

# The second client library itself: it ends the process on each mistake.
oru_add_test(strict_client_test SOURCES strict_client/strict_client_test.cpp LIBS strict-client)

# oru-snapshot on random devices.
add_test(NAME strict.random_devices
         COMMAND /usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/snapshot_tool/random_devices_test.py
                 ${PROJECT_SOURCE_DIR} ${ORU_STRICT_BIN_DIR} 61 60)

# FILE and the same snapshot as this client library answers from it.
add_test(NAME strict.file
         COMMAND /usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/snapshot_tool/file_test.py
                 ${PROJECT_SOURCE_DIR} ${ORU_STRICT_BIN_DIR} another 41 40)

# oru-probe reports each fault, and nothing departs without one, on both clients.
oru_add_tool_test(probe_faults_test SOURCES probe/faults_test.cpp PROPERTIES ${strict})
add_test(NAME strict.random_probes
         COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/probe/random_probes_test.py
                 ${CMAKE_CURRENT_SOURCE_DIR}/model 501 60 ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
                 ${ORU_STRICT_BIN_DIR})

# Recordings made through it and replayed by ours.
if(ORU_CLIENT STREQUAL snapshot AND CMAKE_BUILD_TYPE STREQUAL Release)
    add_test(NAME strict.recordings
             COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/model/compare_recordings.py
                     ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} $<TARGET_FILE:redirect-etc-oru> 301 150
                     ${written_by_hand})
    set_tests_properties(strict.recordings PROPERTIES
        PROCESSORS 2 ENVIRONMENT ORU_TEST_SERVICE_BIN_DIR=${ORU_STRICT_BIN_DIR})
endif()
