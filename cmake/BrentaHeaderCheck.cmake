# Proves that every exported header stands alone: one source per header includes it twice and nothing else.
# The sources belong to no other target: build 'brenta_headers' with each compiler ('./dev check' does).
file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR}/src/include CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/src/include/brenta/*.h)

add_library(brenta_headers OBJECT EXCLUDE_FROM_ALL)
foreach(header IN LISTS headers)
    string(MAKE_C_IDENTIFIER ${header} name)
    set(source ${PROJECT_BINARY_DIR}/headers/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"@header@\"\n#include \"@header@\"\n" @ONLY)
    target_sources(brenta_headers PRIVATE ${source})
endforeach()
target_include_directories(brenta_headers PRIVATE ${PROJECT_SOURCE_DIR}/src/include)
brenta_configure_target(brenta_headers)
