# One step of the installation test, chosen by -DSTEP; the other variables come from CMakeLists.txt beside this file.
set(PREFIX ${WORK}/moved)

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Runs the embedding program and compares what it prints.
function(expect_output program)
    if(WINDOWS)
        cmake_path(GET program PARENT_PATH folder)
        file(COPY ${PREFIX}/bin/brenta_core.dll DESTINATION ${folder})
        string(APPEND program .exe)
    endif()
    run(${CMAKE_COMMAND} -DEXPECTED=${SOURCE}/examples/embed/main.expected -P ${SOURCE}/cmake/compare_output.cmake --
        ${EMULATOR} ${program})
endfunction()

# Installs under one name and moves the whole: nothing installed may remember where it was put.
function(step_files)
    file(REMOVE_RECURSE ${WORK}/first ${PREFIX})
    run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/first)
    file(RENAME ${WORK}/first ${PREFIX})

    file(GLOB_RECURSE headers RELATIVE ${SOURCE}/src/include ${SOURCE}/src/include/brenta/*.h)
    list(TRANSFORM headers PREPEND include/)
    if(WINDOWS)
        set(files bin/brenta.exe bin/brenta_core.dll)
        set(links libbrenta_core.dll.a)
    else()
        set(files bin/brenta share/bash-completion/completions/brenta share/brenta/textmate/package.json
                  share/vim/vimfiles/syntax/brenta.vim share/man/man1/brenta.1)
        set(links libbrenta_core.so libbrenta_core.so.4 libbrenta_core.so.${VERSION})
    endif()
    list(APPEND files ${headers} ${LIBDIR}/pkgconfig/brenta-core.pc share/brenta/part_report.scr
                      share/brenta/examples/embed/main.cpp)
    foreach(file ${links}
                 cmake/BrentaCore/BrentaCoreConfig.cmake cmake/BrentaCore/BrentaCoreConfigVersion.cmake
                 cmake/BrentaCore/BrentaCoreTargets.cmake)
        list(APPEND files ${LIBDIR}/${file})
    endforeach()
    foreach(file IN LISTS files)
        if(NOT EXISTS ${PREFIX}/${file})
            message(SEND_ERROR "not installed: ${file}")
        endif()
    endforeach()
    list(GET files 0 program)
    run(${EMULATOR} ${PREFIX}/${program} --version)
endfunction()

# Builds a folder of the examples as it was installed, as a project of its own.
function(build_example name)
    set(build ${WORK}/find_package/${name})
    file(REMOVE_RECURSE ${build})
    if(TOOLCHAIN)
        # Others are looked for in the roots of the other platform only.
        set(compiler -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_EXE_LINKER_FLAGS=-static
                     -DBrentaCore_DIR=${PREFIX}/${LIBDIR}/cmake/BrentaCore)
    else()
        set(compiler -DCMAKE_CXX_COMPILER=${CXX})
    endif()
    run(${CMAKE_COMMAND} -S ${PREFIX}/share/brenta/examples/${name} -B ${build} -G ${GENERATOR}
        -DCMAKE_BUILD_TYPE=${CONFIG} ${compiler} -DCMAKE_CXX_FLAGS=${FLAGS} -DCMAKE_PREFIX_PATH=${PREFIX})
    run(${CMAKE_COMMAND} --build ${build})
    if(WINDOWS)
        file(COPY ${PREFIX}/bin/brenta_core.dll DESTINATION ${build})
    endif()
endfunction()

function(step_find_package)
    build_example(embed)
    expect_output(${WORK}/find_package/embed/embed)
    foreach(name programs guide)
        build_example(${name})
        run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK}/find_package/${name} --output-on-failure)
    endforeach()
endfunction()

function(step_pkg_config)
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    execute_process(COMMAND ${PKG_CONFIG} --cflags --libs brenta-core
                    OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options)
    separate_arguments(FLAGS)
    if(WINDOWS)
        list(APPEND options -static) # the compiler's own libraries
    endif()
    file(MAKE_DIRECTORY ${WORK}/pkg_config)
    run(${CXX} -std=c++20 ${FLAGS} ${SOURCE}/examples/embed/main.cpp -o ${WORK}/pkg_config/embed ${options})
    set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})
    expect_output(${WORK}/pkg_config/embed)
endfunction()

# Only names of the library's own namespace leave it; what templates of the standard library leave behind is weak.
function(step_exports)
    execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix ${PREFIX}/${LIBDIR}/libbrenta_core.so
                    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+ [TDBR] " strong "${symbols}")
    list(LENGTH strong count)
    if(count EQUAL 0)
        message(FATAL_ERROR "the library exports nothing")
    endif()
    list(FILTER strong EXCLUDE REGEX "^_Z(T[VIS]|Thn[0-9]+_|GV)?N[KRO]*6brenta")
    if(strong)
        list(JOIN strong "\n" strong)
        message(FATAL_ERROR "exported without need:\n${strong}")
    endif()
endfunction()

# The same of the DLL, which moreover needs no other but the system's.
function(step_exports_of_dll)
    execute_process(COMMAND ${OBJDUMP} -p ${PREFIX}/bin/brenta_core.dll OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "\\[ *[0-9]+\\] _Z[^\n]+" names "${table}")
    list(LENGTH names count)
    if(count EQUAL 0)
        message(FATAL_ERROR "the library exports nothing")
    endif()
    list(FILTER names EXCLUDE REGEX "\\] _Z(T[VIS]|Thn[0-9]+_|GV)?N[KRO]*6brenta")
    string(REGEX MATCHALL "DLL Name: (lib|zlib)[^\n]+" needed "${table}")
    if(names OR needed)
        list(JOIN names "\n" names)
        message(FATAL_ERROR "exported without need:\n${names}\nneeded beside the system: ${needed}")
    endif()
endfunction()

cmake_language(CALL step_${STEP})
