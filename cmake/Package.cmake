# Packages: `cpack --preset release` makes the Debian package, `cpack --preset static` the archive of the
# static programs for any Linux. scripts/test-package checks both.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME oru-cgi-applet)
set(CPACK_PACKAGE_VENDOR "The oru-cgi-applet developers")
set(CPACK_PACKAGE_CONTACT "oru-cgi-applet developers <oru-cgi-applet@example.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/prerm ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "report tools for the device's video service")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "The data-service feeder prints the peak figures of the video streams, the
system's inputs and modes, and the identities of its clients. The
server-report tool prints the video chapter of the device's server report:
streams, quotas, HDMI output, channels, resolutions and inputs.
oru-snapshot records, shows and compares what the video service answers.")
if(ORU_CROSS)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${ORU_CROSS})
endif()

# Builds of the same sources make the same bytes.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/reproducible.cmake)

if(ORU_STATIC)
    set(CPACK_GENERATOR External)
    set(CPACK_PACKAGE_FILE_NAME
        oru-cgi-applet-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr/local)
    set(CPACK_SET_DESTDIR ON)  # the units contain the path of the installed program
    set(CPACK_INSTALL_PREFIX /usr/local)
    set(CPACK_MONOLITHIC_INSTALL ON)
    set(CPACK_EXTERNAL_ENABLE_STAGING ON)
    set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${PROJECT_SOURCE_DIR}/packaging/archive/pack.cmake)
    set(CPACK_ORU_HEADERS ${GLAZE_INCLUDE_DIR}/glaze/glaze.hpp)
    foreach(program oru-cgi-applet oru-snapshot)
        set(map ${PROJECT_BINARY_DIR}/${program}.map)
        target_link_options(${program} PRIVATE -Wl,-Map=${map})
        list(APPEND CPACK_ORU_LINK_MAPS ${map})
    endforeach()
else()
    # Files that only the Debian package contains.
    set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/complete.cmake)
endif()

include(CPack)
