# Every test that runs the tools, run on the client that forgives nothing too.
set(strict ENVIRONMENT ORU_TEST_BIN_DIR=${ORU_STRICT_BIN_DIR})
foreach(test dispatch_test tlm_test serverreport_test failure_matrix_test golden_test arguments_test
             writes_test live_objects_test)
    add_dependencies(${test} strict-applet)
    oru_repeat_test(${test} strict PROPERTIES ${strict})
endforeach()
# With getters that widen nothing, where no test is about just that.
foreach(test tlm_test serverreport_test failure_matrix_test golden_test)
    oru_repeat_test(${test} exact
        PROPERTIES ${strict} ENVIRONMENT_MODIFICATION ORU_STRICT_EXACT=set:1
        EXCEPT *widen*)
endforeach()
