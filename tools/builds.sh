# shellcheck shell=bash
# Configuring and building the presets of CMakePresets.json.

JOBS=$(nproc)

# configure_build PRESET [CMAKE OPTION]...
configure_build() {
    local preset=$1
    shift
    step "configure $preset" "$preset-configure" cmake --preset "$preset" "$@" || exit 1
}

# For commands that need no tests, and so not their packages. A configured tree stays as it is: it brings itself up to
# date while it builds, and one that has the tests keeps them.
configure_without_tests() {
    [ -f "build/$1/build.ninja" ] || configure_build "$1" -DBRENTA_BUILD_TESTS=OFF
}

# run_build PRESET [TARGET]...
run_build() {
    local preset=$1
    shift
    step "build $preset${*:+ ($*)}" "$preset-build" cmake --build "build/$preset" -j "$JOBS" ${1:+--target "$@"} || exit 1
}

# One package to run programs with, one to build them with; both for the Debian release that they are made on.
command_package() {
    [ $# -eq 0 ] || usage_error "'package' takes no '$1'."
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_PACKAGE[@]}"
    configure_build package
    run_build package
    rm -rf build/package/packages
    step "packages" package-cpack cpack --config build/package/CPackConfig.cmake || exit 1
    ls build/package/packages/*.deb
}

command_build() {
    case ${1:-} in
        '') ;;
        --windows)
            build_windows
            return
            ;;
        *) usage_error "'build' takes no '$1'." ;;
    esac
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_TEST[@]}"
    configure_build release -DBRENTA_BUILD_TESTS=ON
    run_build release
}
