# The tests that docs/reliability.md tells about, beside those that show what the tools print.
add_subdirectory(fuzz)

# Every report number.
add_executable(every-number report/every_number.cpp)
target_link_libraries(every-number PRIVATE report oru-warnings)
add_test(NAME every-number.sample COMMAND every-number 4001)
