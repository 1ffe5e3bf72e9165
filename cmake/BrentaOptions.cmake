# Compiler settings shared by every target of the project: language dialect, warnings, sanitizers.
# A target joins with brenta_configure_target(<target>).

set(BRENTA_WARNINGS
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Wvla -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees overlapping copies in the standard library's own text + std::string, at -O2 and above.
    list(APPEND BRENTA_WARNINGS -Wno-restrict)
endif()

set(BRENTA_SANITIZE_FLAGS)
if(BRENTA_SANITIZE STREQUAL "address")
    set(BRENTA_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(BRENTA_SANITIZE STREQUAL "thread")
    set(BRENTA_SANITIZE_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(BRENTA_SANITIZE)
    message(FATAL_ERROR "BRENTA_SANITIZE must be empty, 'address' or 'thread', not '${BRENTA_SANITIZE}'")
endif()

# The fuzzer steers by the branches that it sees taken, so the library itself is instrumented for it.
set(BRENTA_FUZZ_FLAGS)
if(BRENTA_BUILD_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "BRENTA_BUILD_FUZZ needs clang: configure with 'cmake --preset fuzz'")
    endif()
    set(BRENTA_FUZZ_FLAGS -fsanitize=fuzzer-no-link)
endif()

function(brenta_configure_target target)
    target_compile_options(${target} PRIVATE -fsigned-char ${BRENTA_WARNINGS} ${BRENTA_SANITIZE_FLAGS}
                                             ${BRENTA_FUZZ_FLAGS})
    target_link_options(${target} PRIVATE ${BRENTA_SANITIZE_FLAGS})
endfunction()

# A compiler cache is used where there is one, and asked for nowhere.
find_program(BRENTA_CCACHE ccache)
mark_as_advanced(BRENTA_CCACHE)
if(BRENTA_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER ${BRENTA_CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${BRENTA_CCACHE})
endif()
