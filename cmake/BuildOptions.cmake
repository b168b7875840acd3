# Compiler and linker flags of all our targets.
set(ORU_USES_LIBCXX OFF)
if(CMAKE_CXX_FLAGS MATCHES "-stdlib=libc\\+\\+")
    set(ORU_USES_LIBCXX ON)
endif()

# The programs print failed assertions, so no build type turns them off.
foreach(type RELEASE RELWITHDEBINFO MINSIZEREL)
    string(REPLACE "-DNDEBUG" "" CMAKE_CXX_FLAGS_${type} "${CMAKE_CXX_FLAGS_${type}}")
    string(REPLACE "-DNDEBUG" "" CMAKE_C_FLAGS_${type} "${CMAKE_C_FLAGS_${type}}")
endforeach()

# A run takes a millisecond, and most of that is loading code: smaller code is faster code.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
if(CMAKE_BUILD_TYPE STREQUAL Release)
    # CMake's check uses the system's default linker, which may be too old for this LLVM. We use lld.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND CMAKE_CXX_COMPILER_AR)
        set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    else()
        include(CheckIPOSupported)
        check_ipo_supported(RESULT CMAKE_INTERPROCEDURAL_OPTIMIZATION OUTPUT why)
    endif()
    if(NOT CMAKE_INTERPROCEDURAL_OPTIMIZATION)
        message(WARNING "No link-time optimization, so the programs start slower: ${why}")
    endif()
endif()

# 32-bit builds support files beyond 2 GiB. The size of time_t is that of the C++ library, which was built
# already.
add_compile_definitions(_FILE_OFFSET_BITS=64)

add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections -Wl,--as-needed)
# The build id would depend on the folder of the sources, because link-time optimization names functions
# after it.
add_link_options(-Wl,--build-id=none)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    add_link_options(-fuse-ld=lld)
    # Our libraries also contain machine code: tests link them in a tenth of the time. (From GCC, this
    # would bring false warnings.) What does not change is not optimized again.
    set(is_optimized_by_linker $<BOOL:$<TARGET_PROPERTY:INTERPROCEDURAL_OPTIMIZATION>>)
    add_compile_options($<${is_optimized_by_linker}:-ffat-lto-objects>)
    add_link_options($<${is_optimized_by_linker}:-ffat-lto-objects>)
    add_link_options($<${is_optimized_by_linker}:-Wl,--thinlto-cache-dir=${PROJECT_BINARY_DIR}/lto>)
    # ccache finds a precompiled header again only if it does not contain the headers' times.
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

# g++ reads the headers again where a target's macros are not those of the precompiled header.
set(CMAKE_PCH_WARN_INVALID OFF)

# Hardening: position-independent programs, relocations that are read-only once loaded, guarded stacks,
# checked buffers.
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
    # The option has this name for both compilers and both standard libraries.
    add_link_options($<$<LINK_LANGUAGE:CXX>:-static-libstdc++> -static-libgcc)
    # On 32-bit ARM, static libc++ requires LLVM's unwinder: with libgcc's, the first exception ends the
    # program.
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

# Warnings are errors, in our own code only.
add_library(oru-warnings INTERFACE)
target_compile_options(oru-warnings INTERFACE -Wall -Wextra -Wpedantic -Werror
    # GCC's also warns of a variable named as a member function, and of a lambda's parameter named as one
    # of the function around it. In a unity build it would warn of names in other files.
    $<$<AND:$<CXX_COMPILER_ID:Clang>,$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>>:-Wshadow>
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
