# clang 19 with libc++ for another processor, ORU_CROSS: arm64, armhf or s390x, as Debian names them.
# Debian's packages for it lie beside those of the machine that builds: libc6-dev, libgcc-12-dev,
# libc++-19-dev, libc++abi-19-dev and libglib2.0-dev, each as :arm64 and so on.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORU_CROSS)
set(processor_arm64 aarch64)
set(triplet_arm64 aarch64-linux-gnu)
set(processor_armhf armv7l)
set(triplet_armhf arm-linux-gnueabihf)
set(processor_s390x s390x)
set(triplet_s390x s390x-linux-gnu)
if(NOT triplet_${ORU_CROSS})
    message(FATAL_ERROR "ORU_CROSS is '${ORU_CROSS}'; it must be arm64, armhf or s390x")
endif()
set(triplet ${triplet_${ORU_CROSS}})

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor_${ORU_CROSS}})
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET ${triplet})
    # Any archiver will do: lld needs no index.
    set(CMAKE_${language}_COMPILER_AR /usr/bin/ar)
    set(CMAKE_${language}_COMPILER_RANLIB /usr/bin/ranlib)
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
foreach(kind EXE MODULE SHARED)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()

# Only the target's libraries are looked for.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${triplet}/pkgconfig:/usr/share/pkgconfig)
