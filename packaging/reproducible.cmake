# Run by cpack before it packs: every date in a package is $SOURCE_DATE_EPOCH if set, otherwise the date of
# the last commit, so that the same sources make the same bytes.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    return()
endif()
set(source ${CMAKE_CURRENT_LIST_DIR}/..)
if(EXISTS ${source}/.git)
    execute_process(COMMAND git -C ${source} log -1 --format=%ct
        OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT date)
    file(TIMESTAMP ${source}/CMakeLists.txt date %s UTC)  # `git archive` sets it to the date of the commit
endif()
set(ENV{SOURCE_DATE_EPOCH} ${date})
