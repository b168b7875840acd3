# Runs at installation: installs the systemd units, with the path of the installed program. Requires
# oru_source_dir, oru_build_dir, oru_bin_dir (below the prefix) and oru_client.
set(packaging ${oru_source_dir}/packaging)
foreach(service systemd/oru-snapshot@.service prometheus/oru-metrics.service)
    file(READ ${packaging}/${service} text)
    string(REPLACE /usr/bin/ "${CMAKE_INSTALL_PREFIX}/${oru_bin_dir}/" text "${text}")
    if(NOT oru_client STREQUAL snapshot)
        # A device's own client library does not look at ORU_SNAPSHOT.
        string(REGEX REPLACE "#[^\n]*\nEnvironment=ORU_SNAPSHOT=[^\n]*\n" "" text "${text}")
    endif()
    get_filename_component(name ${service} NAME)
    file(WRITE ${oru_build_dir}/${name} "${text}")
    file(INSTALL ${oru_build_dir}/${name} DESTINATION ${CMAKE_INSTALL_PREFIX}/lib/systemd/system)
endforeach()
file(INSTALL ${packaging}/systemd/oru-snapshot.socket ${packaging}/prometheus/oru-metrics.timer
     DESTINATION ${CMAKE_INSTALL_PREFIX}/lib/systemd/system)
