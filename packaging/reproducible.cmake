# Run by cpack before it packs: every date in a package is that of the last commit, or the one that
# $SOURCE_DATE_EPOCH gives, so that the same sources make the same bytes.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    return()
endif()
set(source ${CMAKE_CURRENT_LIST_DIR}/..)
if(EXISTS ${source}/.git)
    execute_process(COMMAND git -C ${source} log -1 --format=%ct
        OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT date)
    file(TIMESTAMP ${source}/CMakeLists.txt date %s UTC)  # the commit's, as `git archive` leaves it
endif()
set(ENV{SOURCE_DATE_EPOCH} ${date})
