# Compiler settings shared by every target of the project: language dialect, warnings, sanitizers.
# A target joins with brenta_configure_target(<target>).

set(BRENTA_WARNINGS
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Wvla -Werror)

if(BRENTA_SANITIZE STREQUAL "address")
    set(BRENTA_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(BRENTA_SANITIZE STREQUAL "thread")
    set(BRENTA_SANITIZE_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(BRENTA_SANITIZE)
    message(FATAL_ERROR "BRENTA_SANITIZE must be empty, 'address' or 'thread', not '${BRENTA_SANITIZE}'")
endif()

function(brenta_configure_target target)
    target_compile_options(${target} PRIVATE -fsigned-char ${BRENTA_WARNINGS} ${BRENTA_SANITIZE_FLAGS})
    target_link_options(${target} PRIVATE ${BRENTA_SANITIZE_FLAGS})
endfunction()
