# Every test that runs the tools, run on the client that forgives nothing too.
set(strict ENVIRONMENT ORU_TEST_BIN_DIR=${ORU_STRICT_BIN_DIR})
foreach(test dispatch_test tlm_test serverreport_test failure_matrix_test golden_test arguments_test
             writes_test live_objects_test device_test)
    add_dependencies(${test} strict-applet)
    oru_repeat_test(${test} strict PROPERTIES ${strict})
endforeach()
# With getters that widen nothing, where no test is about just that.
foreach(test tlm_test serverreport_test failure_matrix_test golden_test)
    oru_repeat_test(${test} exact
        PROPERTIES ${strict} ENVIRONMENT_MODIFICATION ORU_STRICT_EXACT=set:1
        EXCEPT *widen*)
endforeach()

# What the sections ask of it.
oru_add_test(calls_test
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
            support/calls.cpp
    LIBS run-tools)
target_compile_definitions(calls_test PRIVATE ORU_STRICT_BIN_DIR="${ORU_STRICT_BIN_DIR}")
add_dependencies(calls_test strict-applet)

# That the client does not forgive.
oru_add_test(strict_client_test SOURCES strict_client/strict_client_test.cpp LIBS strict-client)

# Devices of all kinds, asked about everything.
add_test(NAME strict.random_devices
         COMMAND /usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/snapshot/random_devices_test.py
                 ${PROJECT_SOURCE_DIR} ${ORU_STRICT_BIN_DIR} 61 60)
set_tests_properties(strict.random_devices PROPERTIES TIMEOUT ${ORU_TEST_TIMEOUT})

# What its faults are told by, and that without one nothing departs, be it this client or the other.
oru_add_test(probe_faults_test SOURCES snapshot/probe/faults_test.cpp LIBS run-tools
             PROPERTIES ${strict})
add_test(NAME strict.random_probes
         COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/snapshot/probe/random_probes_test.py
                 ${CMAKE_CURRENT_SOURCE_DIR}/model 501 60 ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
                 ${ORU_STRICT_BIN_DIR})
set_tests_properties(strict.random_probes PROPERTIES TIMEOUT ${ORU_TEST_TIMEOUT})

# What they print, held against the model.
add_test(NAME strict.model
         COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/model/compare.py
                 ${ORU_STRICT_BIN_DIR} $<TARGET_FILE:redirect-etc-oru> 301 ${model_snapshots})
set_tests_properties(strict.model PROPERTIES TIMEOUT ${ORU_TEST_TIMEOUT} PROCESSORS 2)

# What it answers, recorded through it and given back by ours.
if(ORU_CLIENT STREQUAL snapshot AND CMAKE_BUILD_TYPE STREQUAL Release)
    add_test(NAME strict.recordings
             COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/model/compare_recordings.py
                     ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} $<TARGET_FILE:redirect-etc-oru> 301 150
                     ${written_by_hand})
    set_tests_properties(strict.recordings PROPERTIES
        TIMEOUT ${ORU_TEST_TIMEOUT} PROCESSORS 2 ENVIRONMENT ORU_TEST_SERVICE_BIN_DIR=${ORU_STRICT_BIN_DIR})
endif()
