# shellcheck shell=bash
# './dev check': what can be said about the source text without running the library.

CHECKS=(format shell lists layers headers docs tidy)

command_check() {
    local wanted=("$@") name failed=0
    [ $# -gt 0 ] || wanted=("${CHECKS[@]}")
    for name in "${wanted[@]}"; do
        [[ " ${CHECKS[*]} " == *" $name "* ]] || usage_error "There is no check '$name', only: ${CHECKS[*]}."
    done
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_CLANG[@]}" "${PACKAGES_CHECK[@]}" "${PACKAGES_DOCS[@]}"
    for name in "${wanted[@]}"; do
        "check_$name" || failed=$((failed + 1))
    done
    [ "$failed" -eq 0 ] || die "$failed of ${#wanted[@]} checks failed"
}

cpp_files() {
    find "$@" -name '*.cpp' -o -name '*.h' | LC_ALL=C sort
}

check_format() {
    step "format" check-format format_all
}

# Says where each file first differs; clang-format itself would quote every line.
format_all() {
    cpp_files src host examples tests fuzz bench | xargs clang-format --dry-run -Werror --ferror-limit=1 2>&1 |
        sed -n 's/: error: code should be clang-formatted.*/: not formatted/p'
}

check_shell() {
    step "shell" check-shell shell_scripts
}

shell_scripts() {
    # Through ./dev its pieces are read together, so that each sees the names of the others.
    shellcheck --external-sources dev && shellcheck tools/layers.sh tools/unlisted_sources.sh .ci/run host/completion/brenta.bash
}

check_lists() {
    step "lists" check-lists bash tools/unlisted_sources.sh
}

check_layers() {
    step "layers" check-layers bash tools/layers.sh
}

check_headers() {
    configure_without_tests release
    configure_without_tests clang
    step "headers with g++" check-headers-g++ cmake --build build/release --target brenta_headers &&
        step "headers with clang++" check-headers-clang++ cmake --build build/clang --target brenta_headers
}

check_docs() {
    step "docs" docs build_docs
}

check_tidy() {
    configure_without_tests clang
    step "tidy" check-tidy tidy_all
}

# One clang-tidy per source that is compiled here; xargs reports a failure when any of them failed. The count of what was
# found in system headers and dropped says nothing.
tidy_all() {
    sed -En "s#^ *\"file\": \"$PWD/((src|host)/.*\.cpp)\".*#\1#p" build/clang/compile_commands.json | LC_ALL=C sort -u |
        xargs -P "$JOBS" -n 1 clang-tidy -p build/clang --quiet 2>&1 |
        sed '/^[0-9]* warnings\? generated\.$/d'
}
