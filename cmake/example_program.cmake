# add_example(<target> <test> <source>): a program of the examples, and the test that compares what it prints with the file
# of expectations beside it.
function(add_example target test source)
    get_filename_component(name ${source} NAME_WE)
    add_executable(${target} ${source})
    target_link_libraries(${target} PRIVATE Brenta::Core)
    if(COMMAND brenta_configure_target)
        brenta_configure_target(${target})
    endif()
    add_test(NAME ${test}
             COMMAND ${CMAKE_COMMAND} -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/${name}.expected
                     -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/compare_output.cmake --
                     ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${target}>)
endfunction()
