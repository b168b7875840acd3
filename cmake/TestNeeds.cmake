# Sets ORU_TESTS_LACK to what the tests require and this machine lacks: empty if they can be built and
# run. `scripts/setup --test` installs all of it.
set(ORU_TESTS_LACK "")
foreach(file /usr/src/googletest/CMakeLists.txt /usr/include/nlohmann/json.hpp)
    if(NOT EXISTS ${file})
        list(APPEND ORU_TESTS_LACK ${file})
    endif()
endforeach()

# Programs that tests start. When cross-compiling, tests start only ours.
if(NOT CMAKE_CROSSCOMPILING)
    foreach(program bash dot jq man mandoc valgrind zsh)
        find_program(found ${program} NO_CACHE)
        if(NOT found)
            list(APPEND ORU_TESTS_LACK ${program})
        endif()
        unset(found)
    endforeach()
    foreach(module jsonschema)
        execute_process(COMMAND /usr/bin/python3 -c "import ${module}" RESULT_VARIABLE result
            OUTPUT_QUIET ERROR_QUIET)
        if(NOT result EQUAL 0)
            list(APPEND ORU_TESTS_LACK "python3 ${module}")
        endif()
    endforeach()
endif()
list(JOIN ORU_TESTS_LACK ", " ORU_TESTS_LACK)
