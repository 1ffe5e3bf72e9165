# What the distribution brings for Windows as source only, or for every platform at once: the targets that find_package
# gives elsewhere. Included where CMAKE_SYSTEM_NAME is Windows.

# No DLL of the compiler's is needed beside ours.
add_link_options(-static)

# Programs find the library beside themselves.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# minizip, unmodified. './dev build --windows' puts its source here; its headers are included as <minizip/...>.
set(BRENTA_MINIZIP_SOURCE ${PROJECT_SOURCE_DIR}/build/minizip CACHE PATH "Source folder of minizip")
if(NOT EXISTS ${BRENTA_MINIZIP_SOURCE}/zip.c)
    message(FATAL_ERROR "No source of minizip in ${BRENTA_MINIZIP_SOURCE}; './dev build --windows' fetches it")
endif()
set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)
foreach(header crypt ioapi unzip zip)
    configure_file(${BRENTA_MINIZIP_SOURCE}/${header}.h ${PROJECT_BINARY_DIR}/packages/minizip/${header}.h COPYONLY)
endforeach()
set(sources ioapi.c unzip.c zip.c)
list(TRANSFORM sources PREPEND ${BRENTA_MINIZIP_SOURCE}/)
add_library(brenta_minizip STATIC ${sources})
target_include_directories(brenta_minizip SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/packages)
target_compile_options(brenta_minizip PRIVATE -w)
target_link_libraries(brenta_minizip PUBLIC ZLIB::ZLIB)

# CLI11 is headers alone; they stand among headers that are not for this platform.
if(BRENTA_BUILD_HOST)
    find_path(BRENTA_CLI11_INCLUDE CLI/CLI.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH)
    mark_as_advanced(BRENTA_CLI11_INCLUDE)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
    file(CREATE_LINK ${BRENTA_CLI11_INCLUDE}/CLI ${PROJECT_BINARY_DIR}/packages/CLI SYMBOLIC)
    add_library(CLI11::CLI11 INTERFACE IMPORTED GLOBAL)
    target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/packages)
endif()

# GoogleTest comes as source, too.
if(BRENTA_BUILD_TESTS)
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK OFF)
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/packages/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
