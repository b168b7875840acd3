# Installation. The default component contains what a device runs and what people read. The component
# `client` contains our client libraries, with their headers and .pc files. The component `probe`
# contains the program that checks a device's client libraries.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)

# The links are relative, so that they work in any prefix and under any DESTDIR.
install(TARGETS oru-cgi-applet oru-snapshot)
install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/oru-tlm-tool
              ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/oru-serverreport-tool
        TYPE BIN)
if(ORU_MANUALS)
    install(FILES docs/man/oru-cgi-applet.1 docs/man/oru-serverreport-tool.1
                  docs/man/oru-snapshot.1 docs/man/oru-tlm-tool.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES docs/man/oru-reports.5 docs/man/oru-snapshot.5
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
endif()
install(TARGETS oru-probe COMPONENT probe EXCLUDE_FROM_ALL)
if(ORU_MANUALS)
    install(FILES docs/man/oru-probe.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT probe EXCLUDE_FROM_ALL)
endif()
install(FILES docs/reports.schema.json docs/snapshot.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/oru)
install(PROGRAMS examples/read_report.py DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        FILES_MATCHING PATTERN *.json)
install(DIRECTORY packaging/prometheus/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/prometheus
        FILES_MATCHING PATTERN *.yml)
install(DIRECTORY packaging/grafana/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/grafana)
install(FILES docs/fleet.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(CODE "
    set(oru_source_dir \"${PROJECT_SOURCE_DIR}\")
    set(oru_build_dir \"${PROJECT_BINARY_DIR}\")
    set(oru_bin_dir \"${CMAKE_INSTALL_BINDIR}\")
    set(oru_client ${ORU_CLIENT})")
install(SCRIPT cmake/install-units.cmake)

# bash looks for a file with the name of the command.
foreach(command oru-serverreport-tool oru-snapshot oru-tlm-tool)
    install(FILES packaging/completions/oru.bash
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${command})
endforeach()
# zsh looks in different places for functions from packages and for those that the administrator
# installs.
install(CODE "
    set(directory site-functions)
    if(CMAKE_INSTALL_PREFIX STREQUAL /usr)
        set(directory vendor-completions)
    endif()
    file(INSTALL \"${PROJECT_SOURCE_DIR}/packaging/completions/_oru\"
         DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/zsh/\${directory}\")")

if(ORU_CLIENT STREQUAL snapshot)
    # The installed libraries also contain machine code: a program that links them need be built
    # neither with link-time optimization nor with our compiler. From clang, all of ours contain it.
    if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        foreach(library oru qwire)
            target_compile_options(${library} PRIVATE -ffat-lto-objects)
            target_link_options(${library} INTERFACE -ffat-lto-objects)
        endforeach()
    endif()
    install(TARGETS oru qwire
            ARCHIVE COMPONENT client EXCLUDE_FROM_ALL
            LIBRARY COMPONENT client EXCLUDE_FROM_ALL)
    install(FILES src/video/oru.h src/video/qwire.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oru COMPONENT client EXCLUDE_FROM_ALL)
    # qwire.h includes it as "snapshot/value.h".
    install(FILES src/snapshot/value.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oru/snapshot COMPONENT client EXCLUDE_FROM_ALL)
    # The .pc files give the prefix relative to their own folder, because it is not known before
    # installation.
    file(RELATIVE_PATH ORU_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    foreach(library oru qwire)
        configure_file(packaging/pkgconfig/${library}.pc.in ${library}.pc @ONLY)
        install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
                DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT client EXCLUDE_FROM_ALL)
    endforeach()
endif()
