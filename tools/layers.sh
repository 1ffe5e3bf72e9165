#!/usr/bin/env bash
# Proves the layers: within src/ includes point downward or sideways, users of the library see its exported headers alone,
# and the headers and macros of one platform stay behind the seam.
set -euo pipefail
cd "$(dirname "$0")/.."

FLOORS=(os foundation files platform script xml)
PLATFORM_HEADERS='<(unistd|pthread|dlfcn|fcntl|signal|poll|dirent|pwd|termios|execinfo|netdb|sched|link|elf|windows|winsock2|ws2tcpip|shlobj|shellapi|wininet|winhttp|msxml2|objbase|oleauto|shlwapi)\.h>|<(sys|linux|arpa|netinet|net)/'
PLATFORM_MACROS='^ *# *(if|ifdef|ifndef|elif).*(_WIN32|_WIN64|__linux__|__unix__|__MINGW32__|_MSC_VER)'

result=0

# forbid WHY PATTERN FILE... - prints every line of the files that matches
forbid() {
    local why=$1 pattern=$2 found
    shift 2
    [ $# -gt 0 ] || return 0
    if found=$(grep -HnE -e "$pattern" -- "$@"); then
        printf '%s:\n%s\n' "$why" "$found"
        result=1
    fi
}

files_of() {
    find "$@" \( -name '*.cpp' -o -name '*.h' \) 2>/dev/null | LC_ALL=C sort || true
}

# Floors: each may not include any above it.
for ((floor = 0; floor < ${#FLOORS[@]}; ++floor)); do
    above=("${FLOORS[@]:floor+1}")
    [ ${#above[@]} -gt 0 ] || continue
    mapfile -t files < <(files_of "src/${FLOORS[floor]}")
    forbid "src/${FLOORS[floor]} reaches upward" "#include \"($(IFS='|' && echo "${above[*]}"))/" "${files[@]}"
done

# Users: exported headers only.
mapfile -t files < <(files_of src/include)
internal=$(IFS='|' && echo "${FLOORS[*]}")
forbid "an exported header includes an internal one" "#include \"($internal)/" "${files[@]}"
mapfile -t files < <(files_of host examples bench)
forbid "a user of the library includes an internal header" "#include \"($internal)/" "${files[@]}"

# The platform seam.
mapfile -t files < <(files_of src host examples | grep -vE '^src/os/[a-z]+/|_(linux|windows|libedit|wininet|msxml)\.cpp$|/wininet_request\.cpp$|_msxml\.h$|/export\.h$')
forbid "a platform's own header outside src/os" "#include $PLATFORM_HEADERS" "${files[@]}"
forbid "a platform's own branch outside src/os" "$PLATFORM_MACROS" "${files[@]}"

exit "$result"
