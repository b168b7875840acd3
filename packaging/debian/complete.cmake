# Run by cpack on the staged installation: adds the changelogs and the copyright file, and compresses
# what Debian requires compressed.
set(usr ${CPACK_TEMPORARY_DIRECTORY}/usr)
set(doc ${usr}/share/doc/oru-cgi-applet)
set(source ${CMAKE_CURRENT_LIST_DIR}/../..)

configure_file(${source}/LICENSE ${doc}/copyright COPYONLY)
configure_file(${source}/CHANGELOG.md ${doc}/changelog COPYONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${doc}/changelog.Debian COPYONLY)
file(GLOB files ${doc}/changelog* ${usr}/share/man/man?/*)
# The modes must not depend on the umask, with which cpack creates these folders.
file(CHMOD_RECURSE ${usr} DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
execute_process(COMMAND gzip -n9 ${files} COMMAND_ERROR_IS_FATAL ANY)
