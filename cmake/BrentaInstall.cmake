# What 'cmake --install' puts in place: the library with its headers, the host program, the CMake package 'BrentaCore' with
# the target Brenta::Core, and the pkg-config module 'brenta-core'. The result may be moved as a whole: both find their
# files relative to themselves.
include(CMakePackageConfigHelpers)

set(BRENTA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/BrentaCore)
set(BRENTA_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(BRENTA_EXAMPLES_DIR ${CMAKE_INSTALL_DATADIR}/brenta/examples)

install(TARGETS brenta_core EXPORT BrentaCoreTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/include/brenta DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT Development FILES_MATCHING PATTERN "*.h")
if(TARGET brenta_host)
    install(TARGETS brenta_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
    install(FILES ${PROJECT_SOURCE_DIR}/examples/part_report.scr DESTINATION ${CMAKE_INSTALL_DATADIR}/brenta
            COMPONENT Runtime)
endif()
if(TARGET brenta_host AND NOT WIN32)
    # Where shells and Vim look by themselves. Debian keeps what packages bring for zsh apart.
    set(BRENTA_ZSH_DIR zsh/site-functions)
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS /etc/debian_version)
        set(BRENTA_ZSH_DIR zsh/vendor-completions)
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/host/completion/brenta.bash
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME brenta COMPONENT Runtime)
    if(TARGET brenta_manual)
        install(FILES ${PROJECT_BINARY_DIR}/host/brenta.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Runtime)
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/host/completion/_brenta
            DESTINATION ${CMAKE_INSTALL_DATADIR}/${BRENTA_ZSH_DIR} COMPONENT Runtime)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/editors/vim/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vim/vimfiles
            COMPONENT Runtime)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/editors/textmate DESTINATION ${CMAKE_INSTALL_DATADIR}/brenta
            COMPONENT Runtime)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/brenta COMPONENT Development)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/compare_output.cmake ${PROJECT_SOURCE_DIR}/cmake/example_program.cmake
        DESTINATION ${BRENTA_EXAMPLES_DIR} COMPONENT Development)

install(EXPORT BrentaCoreTargets NAMESPACE Brenta:: DESTINATION ${BRENTA_PACKAGE_DIR} COMPONENT Development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/BrentaCoreConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/package/BrentaCoreConfig.cmake
                              INSTALL_DESTINATION ${BRENTA_PACKAGE_DIR} PATH_VARS BRENTA_EXAMPLES_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/BrentaCoreConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/BrentaCoreConfig.cmake
              ${PROJECT_BINARY_DIR}/package/BrentaCoreConfigVersion.cmake
        DESTINATION ${BRENTA_PACKAGE_DIR} COMPONENT Development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE BRENTA_INCLUDE_FROM_PKGCONFIG)
set(BRENTA_LINK_NAME brenta_core)
if(WIN32)
    # By its whole name the import library is found by those, too, who link all else statically.
    set(BRENTA_LINK_NAME :libbrenta_core.dll.a)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/brenta-core.pc.in ${PROJECT_BINARY_DIR}/package/brenta-core.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/brenta-core.pc DESTINATION ${BRENTA_PKGCONFIG_DIR} COMPONENT Development)
