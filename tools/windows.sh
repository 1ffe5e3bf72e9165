# shellcheck shell=bash
# Windows x64: cross-built with mingw-w64, tested under Wine in a Windows of the build's own (tools/wine).

MINIZIP_SOURCE=build/minizip

# The distribution's own source package, with its corrections. Its lists are fetched beside those of the machine, whose
# settings stay as they are.
need_minizip_source() {
    [ -f "$MINIZIP_SOURCE/zip.c" ] || step "source of minizip" minizip-source fetch_minizip || exit 1
}

fetch_minizip() {
    local folder=build/minizip-source
    rm -rf "$folder" "$MINIZIP_SOURCE" && mkdir -p "$folder/lists/partial" || return
    # The origins are known to a machine that has fetched its lists.
    source_lists 'Origin: Debian' >"$folder/sources.list"
    [ -s "$folder/sources.list" ] || source_lists >"$folder/sources.list"
    local apt=(apt-get -q -o "Dir::Etc::SourceList=$PWD/$folder/sources.list" -o 'Dir::Etc::SourceParts=-'
        -o "Dir::State::Lists=$PWD/$folder/lists" -o 'APT::Sandbox::User=')
    "${apt[@]}" update && (cd "$folder" && "${apt[@]}" source minizip) || return
    mv "$folder"/minizip-*/ "$MINIZIP_SOURCE"
}

source_lists() {
    apt-get indextargets --format "deb-src \$(REPO_URI) \$(RELEASE) \$(COMPONENT)" 'Created-By: Packages' "$@" |
        LC_ALL=C sort -u
}

build_windows() {
    need_packages "${PACKAGES_WINDOWS[@]}"
    need_minizip_source
    configure_build windows -DBRENTA_BUILD_TESTS=ON
    run_build windows
}

# test_windows [CTEST OPTION]...
test_windows() {
    build_windows
    step "start Windows" windows-start start_windows || exit 1
    local result=0
    step "tests windows" windows-tests ctest --test-dir build/windows -j "$JOBS" --verbose --no-tests=error --timeout 300 \
        "$@" || result=1
    WINEPREFIX=$PWD/build/wine "$(wine_server)" --kill || true
    count_cases build/logs/windows-tests.log
    return "$result"
}

wine_server() {
    command -v /usr/lib/wine/wineserver64 || command -v wineserver
}

# The server stays until it is told to go; each program would otherwise start it anew.
start_windows() {
    mkdir -p build/wine
    WINEPREFIX=$PWD/build/wine "$(wine_server)" --persistent || true # false also where one is left from another time
    tools/wine wineboot --init
}

# Many cases share one test here, so that ctest does not count them; a test without cases of its own counts as one. Each
# line of a test begins with its number.
count_cases() {
    awk '
        /^[0-9]+: \[  (PASSED|FAILED|SKIPPED)  ?\] [0-9]+ test/ { has_cases[$1 + 0] = 1; cases[$3] += $5 }
        /^ *[0-9]+\/[0-9]+ Test +#[0-9]+: / {
            match($0, /#[0-9]+/)
            if (!has_cases[substr($0, RSTART + 1, RLENGTH - 1) + 0]) ++cases[/ Passed / ? "PASSED" : "FAILED"]
        }
        END {
            total = cases["PASSED"] + cases["FAILED"]
            printf "%d%% tests passed, %d tests failed out of %d (%d skipped)\n", \
                total ? 100 * cases["PASSED"] / total : 0, cases["FAILED"], total, cases["SKIPPED"]
        }' "$1"
}

# What the library makes of the same random work on both platforms, told by the twins of one program.
command_agree() {
    [ $# -eq 0 ] || usage_error "'agree' takes no '$1'."
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_TEST[@]}" "${PACKAGES_WINDOWS[@]}"
    need_minizip_source
    local preset
    for preset in release windows; do
        configure_build "$preset" -DBRENTA_BUILD_TESTS=ON
        run_build "$preset" brenta_agreement
        rm -rf "build/$preset/agreement" && mkdir -p "build/$preset/agreement"
    done
    step "start Windows" windows-start start_windows || exit 1
    step "random work on Linux" agree-linux env "XDG_DATA_HOME=$PWD/build/release/agreement" \
        build/release/tests/agreement/brenta_agreement build/release/agreement || exit 1
    step "random work on Windows" agree-windows tools/wine build/windows/bin/brenta_agreement.exe \
        build/windows/agreement || exit 1
    local story result=0
    for story in build/release/agreement/*.txt; do
        story=$(basename "$story")
        step "agree on ${story%.txt}" "agree-${story%.txt}" \
            diff -a "build/release/agreement/$story" "build/windows/agreement/$story" || result=1
    done
    return "$result"
}
