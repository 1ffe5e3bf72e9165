# What 'cpack' makes of an installation: Debian packages, one to run programs with (the library and the host), one to build
# them with. './dev package' makes them from the preset 'package', whose prefix is a package's.
set(CPACK_PACKAGE_NAME brenta-core)
set(CPACK_PACKAGE_VENDOR "Orvane Works")
set(CPACK_PACKAGE_CONTACT "Brenta Core <brenta-core@orvane.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Core library of the Brenta circuit-board designer")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_STRIP_FILES ON)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libbrenta-core${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The program comes with the library, so two versions of the library cannot stand side by side: the newer one takes over.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_PROVIDES brenta)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONFLICTS brenta)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_REPLACES brenta)
# Opened at run time where they are: for proxy configuration scripts, the desktop's proxies, and to show pages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS libpacparser1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "libproxy1v5, xdg-utils")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers) # the loader learns of the library
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Lengths with units, an embedded script language, XML and HTML documents,
settings, archives and network access, shared by the programs of Brenta.
.
This package holds the shared library, and brenta, the console host: it
evaluates lengths, runs and checks scripts, and shows what the library makes
of documents.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libbrenta-core-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, the CMake package BrentaCore and the pkg-config module brenta-core,
to build programs around the library, and examples of such programs.")

# What Debian wants to find in every package: the manual page compressed, and in a folder for each package who may do what
# with it and what has changed.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS /etc/debian_version)
    set(BRENTA_CLI11_COPYRIGHT "(nothing)")
    if(EXISTS /usr/share/doc/libcli11-dev/copyright)
        file(READ /usr/share/doc/libcli11-dev/copyright BRENTA_CLI11_COPYRIGHT)
    endif()
    string(TIMESTAMP BRENTA_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
    foreach(file copyright changelog)
        configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/${file}.in ${PROJECT_BINARY_DIR}/package/${file} @ONLY)
    endforeach()
    execute_process(COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/package/changelog COMMAND_ERROR_IS_FATAL ANY)
    foreach(component Runtime Development)
        string(TOUPPER ${component} name)
        install(FILES ${PROJECT_BINARY_DIR}/package/copyright ${PROJECT_BINARY_DIR}/package/changelog.gz
                DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME} COMPONENT ${component})
    endforeach()
    if(TARGET brenta_manual)
        install(CODE "execute_process(COMMAND gzip -9nf brenta.1 COMMAND_ERROR_IS_FATAL ANY WORKING_DIRECTORY
                      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1\")" COMPONENT Runtime)
    endif()
endif()

include(CPack)
