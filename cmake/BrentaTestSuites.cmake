# Starting a program takes long on Windows: there all cases of a suite share one run.
#
#   brenta_add_test_suites(<target>)
#
# adds a test for each suite of the target's sources, by the name of the suite.
function(brenta_add_test_suites target)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "_test\\.cpp$")
    set(suites)
    foreach(source IN LISTS sources)
        file(STRINGS ${source} lines REGEX "^TEST(_F|_P)?\\(")
        foreach(line IN LISTS lines)
            string(REGEX REPLACE "^[A-Z_]*\\(([A-Za-z]*),.*" "\\1" suite "${line}")
            list(APPEND suites ${suite})
        endforeach()
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    endforeach()
    list(REMOVE_DUPLICATES suites)
    foreach(suite IN LISTS suites)
        add_test(NAME ${suite} COMMAND ${target} --gtest_filter=${suite}.*)
    endforeach()
endfunction()
