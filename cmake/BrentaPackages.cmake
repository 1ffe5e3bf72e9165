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
set(CPACK_DEBIAN_RUNTIME_PACKAGE_PROVIDES brenta)
# Opened at run time where they are: for proxy configuration scripts, the desktop's proxies, and to show pages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS libpacparser1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "libproxy1v5, xdg-utils")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
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

include(CPack)
