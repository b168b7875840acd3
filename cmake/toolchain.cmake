# The presets' compiler: $CC and $CXX when set, else clang 19 with libc++ where that is installed
# (Debian 12), else g++ 14 (Debian 13). What was taken is said; what it lacks, CheckToolchain says.
if(DEFINED ENV{CXX} OR CMAKE_CXX_COMPILER)
    return()
endif()

find_program(ORU_CLANGXX clang++-19)
find_program(ORU_GXX g++-14)
if(ORU_CLANGXX AND EXISTS /usr/lib/llvm-19/include/c++/v1/format)
    set(CMAKE_C_COMPILER clang-19)
    set(CMAKE_CXX_COMPILER ${ORU_CLANGXX})
    set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
    # Binutils' archiver is enough where llvm's, of 80 MB, is not installed: lld needs no index in an
    # archive of what is still to be optimised.
    find_program(ORU_LLVM_AR llvm-ar-19)
    if(NOT ORU_LLVM_AR)
        find_program(ORU_AR ar REQUIRED)
        find_program(ORU_RANLIB ranlib REQUIRED)
        foreach(language C CXX)
            set(CMAKE_${language}_COMPILER_AR ${ORU_AR} CACHE FILEPATH "Archiver")
            set(CMAKE_${language}_COMPILER_RANLIB ${ORU_RANLIB} CACHE FILEPATH "Indexer")
        endforeach()
    endif()
elseif(ORU_GXX)
    set(CMAKE_C_COMPILER gcc-14)
    set(CMAKE_CXX_COMPILER ${ORU_GXX})
endif()
message(STATUS "Toolchain: ${CMAKE_CXX_COMPILER} ${CMAKE_CXX_FLAGS_INIT}")
