#!/usr/bin/env bash
# Lists the sources that no CMakeLists.txt names: they would never be compiled, their tests never run.
# A source may be named in its own folder or in any folder above, relative to it.
set -euo pipefail
cd "$(dirname "$0")/.."

# is_listed SOURCE - looks from the source's folder upward
is_listed() {
    local source=$1 folder relative list
    folder=$(dirname "$source")
    while :; do
        list=$folder/CMakeLists.txt
        relative=${source#"$folder"/}
        # The platform's folder may be named through a variable.
        if [ -f "$list" ] && sed 's/#.*//' "$list" | tr -s ' ()' '\n' |
            grep -qxF -e "$relative" -e "\${BRENTA_PLATFORM}/${relative#*/}" -e "$(sed -E "s/_(linux|windows)(_test)?\.cpp$/_\${platform}\2.cpp/" <<<"$relative")"; then
            return 0
        fi
        [ "$folder" != . ] || return 1
        folder=$(dirname "$folder")
    done
}

result=0
while read -r source; do
    if ! is_listed "$source"; then
        echo "$source is in no CMakeLists.txt"
        result=1
    fi
done < <(find src host examples tests fuzz bench -name '*.cpp' | LC_ALL=C sort)
exit "$result"
