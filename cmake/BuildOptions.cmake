# Flags that every target of ours is built with.
set(ORU_USES_LIBCXX OFF)
if(CMAKE_CXX_FLAGS MATCHES "-stdlib=libc\\+\\+")
    set(ORU_USES_LIBCXX ON)
endif()

# Assertions are part of what the program prints: no build type turns them off.
foreach(type RELEASE RELWITHDEBINFO MINSIZEREL)
    string(REPLACE "-DNDEBUG" "" CMAKE_CXX_FLAGS_${type} "${CMAKE_CXX_FLAGS_${type}}")
    string(REPLACE "-DNDEBUG" "" CMAKE_C_FLAGS_${type} "${CMAKE_C_FLAGS_${type}}")
endforeach()

# A run is over in a millisecond, most of it spent on bringing code in: smaller code is faster code.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
if(CMAKE_BUILD_TYPE STREQUAL Release)
    # CMake's check links with the compiler's own linker, which may know an older LLVM; ours is lld.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND CMAKE_CXX_COMPILER_AR)
        set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    else()
        include(CheckIPOSupported)
        check_ipo_supported(RESULT CMAKE_INTERPROCEDURAL_OPTIMIZATION OUTPUT why)
    endif()
    if(NOT CMAKE_INTERPROCEDURAL_OPTIMIZATION)
        message(WARNING "The programs are not optimised as a whole, and start slower: ${why}")
    endif()
endif()

# Processors of 32 bits know the length of files beyond 2 GiB too. How long a time is there, the C++
# library has decided.
add_compile_definitions(_FILE_OFFSET_BITS=64)

add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections -Wl,--as-needed)
# It would tell where the sources lay: link-time optimisation names functions after that.
add_link_options(-Wl,--build-id=none)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    add_link_options(-fuse-ld=lld)
    # Without the times of the headers in it, ccache finds a precompiled header again.
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

# The programs lie where nobody can foresee, what the loader has filled in cannot be written to any
# more, and who writes beyond the stack's frame or a known buffer ends the run.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_link_options(-Wl,-z,relro,-z,now)
if(CMAKE_BUILD_TYPE STREQUAL Release)
    add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
if(ORU_STATIC)
    add_link_options(-static-pie -Wl,-z,pack-relative-relocs)
else()
    include(CheckPIESupported)
    check_pie_supported()
endif()

if(ORU_STATIC_RUNTIME AND NOT ORU_STATIC)
    # Both compilers and both standard libraries know the option by this name.
    add_link_options($<$<LINK_LANGUAGE:CXX>:-static-libstdc++> -static-libgcc)
    # On 32-bit ARM libc++'s archive goes with LLVM's unwinder alone: with libgcc's, the first exception
    # that is thrown ends the program.
    if(ORU_USES_LIBCXX AND CMAKE_SYSTEM_PROCESSOR MATCHES "^armv")
        add_link_options($<$<LINK_LANGUAGE:CXX>:-l:libunwind.a>)
    endif()
endif()

if(ORU_SANITIZE)
    add_compile_options(-fsanitize=${ORU_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ORU_SANITIZE})
endif()
if(ORU_COVERAGE)
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
    add_link_options(-fprofile-instr-generate)
endif()

# Warnings are errors in our own code only.
add_library(oru-warnings INTERFACE)
target_compile_options(oru-warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
