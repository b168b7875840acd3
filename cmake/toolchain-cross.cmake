# clang 19 with libc++ for the processor ORU_CROSS: arm64, armhf or s390x, Debian's names. Requires
# Debian's packages for that processor beside those of the building machine: libc6-dev, libgcc-12-dev,
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
    # lld needs no index of an archive, so any archiver works.
    set(CMAKE_${language}_COMPILER_AR /usr/bin/ar)
    set(CMAKE_${language}_COMPILER_RANLIB /usr/bin/ranlib)
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
foreach(kind EXE MODULE SHARED)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()

# CMake finds libraries of the target only.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${triplet}/pkgconfig:/usr/share/pkgconfig)
