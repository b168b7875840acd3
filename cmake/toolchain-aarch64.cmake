# clang 19 with libc++, and Debian's arm64 packages beside those of the machine that builds:
# libc6-dev, libgcc-12-dev, libc++-19-dev, libc++abi-19-dev and libglib2.0-dev, each as :arm64.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET aarch64-linux-gnu)
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
foreach(kind EXE MODULE SHARED)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()

# Only the target's libraries are looked for.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
