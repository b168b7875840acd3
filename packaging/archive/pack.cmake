# Run by `cpack --preset static` on the staged installation: adds the documents that a static program
# requires, and packs everything reproducibly.
set(source ${CMAKE_CURRENT_LIST_DIR}/../..)
set(root ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX})
set(doc ${root}/share/doc/oru-cgi-applet)
set(archive ${CPACK_PACKAGE_FILE_NAME}.tar.xz)

configure_file(${source}/LICENSE ${doc}/LICENSE COPYONLY)
configure_file(${source}/CHANGELOG.md ${doc}/CHANGELOG.md COPYONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/STATIC.md ${doc}/STATIC.md COPYONLY)
execute_process(
    COMMAND /usr/bin/python3 ${CMAKE_CURRENT_LIST_DIR}/components.py ${doc} ${CPACK_PACKAGE_FILE_NAME}
            ${CPACK_PACKAGE_VERSION} MIT ${CPACK_ORU_HEADERS} -- ${CPACK_ORU_LINK_MAPS}
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(
    COMMAND tar --create --xz --file ${CPACK_TOPLEVEL_DIRECTORY}/${archive} --directory ${root}
            --sort=name --owner=0 --group=0 --numeric-owner --mode=u+rw,go=rX
            --mtime=@$ENV{SOURCE_DATE_EPOCH} --transform=s,^[.],${CPACK_PACKAGE_FILE_NAME}, .
    COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${CPACK_TOPLEVEL_DIRECTORY}/${archive})
