# shellcheck shell=bash
# The commands that build something and run it: demo, test, goldens, fuzz, bench; and docs and metrics, which read only.

command_test() {
    local preset=release filter='' on_windows=''
    while [ $# -gt 0 ]; do
        case $1 in
            --asan) preset=asan ;;
            --tsan) preset=tsan ;;
            --windows) on_windows=yes ;;
            -*) usage_error "'test' takes no '$1'." ;;
            *) filter=$1 ;;
        esac
        shift
    done
    if [ -n "$on_windows" ]; then
        test_windows ${filter:+--tests-regex "$filter"}
        return
    fi
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_TEST[@]}"
    configure_build "$preset" -DBRENTA_BUILD_TESTS=ON
    run_build "$preset"
    run_tests "$preset" ${filter:+--tests-regex "$filter"}
}

# Runs ctest; its closing line, with the count of what passed, is the last on the screen.
run_tests() {
    local preset=$1 result=0
    shift
    # Sanitizers make frames several times larger; what must fit in the usual 8 MB is tested without them.
    [ "$preset" = release ] || ulimit -s 32768 || true
    step "tests $preset" "$preset-tests" ctest --test-dir "build/$preset" -j "$JOBS" --output-on-failure \
        --no-tests=error "$@" || result=1
    grep 'tests passed' "$LOG_DIR/$preset-tests.log" || true
    return "$result"
}

command_demo() {
    [ $# -eq 0 ] || usage_error "'demo' takes no '$1'."
    need_packages "${PACKAGES_BUILD[@]}"
    configure_without_tests release
    run_build release brenta_host brenta_manual # all that is installed
    local brenta=build/release/host/brenta
    headline "Dimension texts, as a user types them  (brenta eval - < examples/dimensions.txt)"
    local lengths
    lengths=$("$brenta" eval - <examples/dimensions.txt)
    { printf 'text\tunits\tinches\tmils\tcentimetres\tmillimetres\n' && paste examples/dimensions.txt - <<<"$lengths"; } |
        awk -F '\t' '{ printf "%-12s %10s  %-12s %-12s %-12s %s\n", $1, $2, $3, $4, $5, $6 }'
    headline "A script at work on a board panel  (brenta run examples/board_panel.scr)"
    "$brenta" run examples/board_panel.scr
    headline "A script walks a part library  (brenta report examples/small_parts.lbr)"
    "$brenta" report examples/small_parts.lbr
    headline "To go on"
    echo "'$brenta' opens a prompt, '$brenta help' tells what else there is."
    echo "docs/language.md teaches scripts, docs/embedding.md takes the library into a program of your own."
}

# Unit tests keep their expectations; those of scripts follow what the host prints, and the diff is what gets reviewed.
command_goldens() {
    need_packages "${PACKAGES_BUILD[@]}"
    configure_without_tests release
    run_build release
    local result=0
    step "expectations of the test scripts" goldens renew_scripts || result=1
    step "outputs of the examples" goldens-examples renew_examples || result=1
    grep ' renewed$' "$LOG_DIR/goldens.log" | sed 's/^/      /' || true
    return "$result"
}

# Files whose names begin with an underscore are parts that other scripts include.
renew_scripts() {
    mkdir -p "$LOG_DIR/renew" # where they run, and may leave files
    find "$PWD/tests/scripts" -name '*.scr' ! -name '_*' | LC_ALL=C sort |
        xargs perl tools/renew_scripts.pl "$PWD/build/release/host/brenta"
}

renew_examples() {
    local source name
    for source in examples/programs/*.cpp; do
        name=$(basename "$source" .cpp)
        "build/release/examples/programs/$name" >"examples/programs/$name.expected" || return 1
    done
    build/release/host/brenta eval - <examples/dimensions.txt >examples/dimensions.expected &&
        build/release/host/brenta run examples/board_panel.scr >examples/board_panel.expected &&
        build/release/host/brenta report examples/small_parts.lbr >examples/part_report.expected
}

command_fuzz() {
    local wanted=${1:-} seconds=60
    if [[ $wanted =~ ^[0-9]+$ ]]; then
        seconds=$wanted wanted=''
    else
        seconds=${2:-60}
    fi
    local targets=() source
    for source in fuzz/*.cpp; do
        [ "$source" = fuzz/replay_main.cpp ] || targets+=("$(basename "$source" .cpp)")
    done
    if [ -n "$wanted" ]; then
        [[ " ${targets[*]} " == *" $wanted "* ]] || usage_error "There is no target '$wanted', only: ${targets[*]}."
        targets=("$wanted")
    fi
    need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_CLANG[@]}" "${PACKAGES_FUZZ[@]}"
    configure_build fuzz
    run_build fuzz "${targets[@]/%/_fuzz}"
    local target result=0
    for target in "${targets[@]}"; do
        step "fuzz $target for $seconds s" "fuzz-$target" fuzz_target "$target" "$seconds" || result=1
        grep '^stat::' "$LOG_DIR/fuzz-$target.log" | sed 's/^stat::/      /' || true
    done
    return "$result"
}

# New inputs go to build/fuzz/corpus, inputs that bring the target down to build/fuzz/crashes; the tree stays as it is.
fuzz_target() {
    local target=$1 seconds=$2 found=build/fuzz/corpus/$1 crashes=build/fuzz/crashes
    local options=()
    mkdir -p "$found" "$crashes"
    [ ! -f "fuzz/$target.dict" ] || options+=("-dict=fuzz/$target.dict")
    "build/fuzz/fuzz/${target}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$crashes/$target-" "${options[@]}" "$found" "fuzz/corpus/$target"
}

# The program prints its own table (or, with --csv, lines for a machine), so it runs in the open.
command_bench() {
    # The table alone goes to standard output.
    {
        need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_BENCH[@]}"
        configure_build bench
        run_build bench brenta_bench
    } >&2
    build/bench/bench/brenta_bench "$@"
}

command_docs() {
    need_packages "${PACKAGES_DOCS[@]}"
    step "reference" docs build_docs || exit 1
    echo "The reference is build/docs/html/index.html"
}

build_docs() {
    mkdir -p build/docs && doxygen docs/Doxyfile
}

command_metrics() {
    perl tools/metrics.pl
}
