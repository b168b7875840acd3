# Run at installation: the systemd units, with the path at which the program is installed. Expects
# oru_source_dir, oru_build_dir, oru_bin_dir (below the prefix) and oru_client.
set(units ${oru_source_dir}/packaging/systemd)
file(READ ${units}/oru-snapshot@.service service)
string(REPLACE /usr/bin/ "${CMAKE_INSTALL_PREFIX}/${oru_bin_dir}/" service "${service}")
if(NOT oru_client STREQUAL snapshot)
    # A device's own client reads no file.
    string(REGEX REPLACE "# The file by its name[^\n]*\nEnvironment=[^\n]*\n" "" service
           "${service}")
endif()
file(WRITE ${oru_build_dir}/oru-snapshot@.service "${service}")
file(INSTALL ${oru_build_dir}/oru-snapshot@.service ${units}/oru-snapshot.socket
     DESTINATION ${CMAKE_INSTALL_PREFIX}/lib/systemd/system)
