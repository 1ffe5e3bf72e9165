# shellcheck shell=bash
# Completion of brenta's command line for bash. What can stand at a place the program itself tells: a line for each
# word, or ":files EXTENSION..." or ":folders".

_brenta() {
    local current=${COMP_WORDS[COMP_CWORD]} line word
    local -a extensions
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
            :folders)
                compopt -o filenames
                mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$current")
                ;;
            :files*)
                compopt -o filenames
                read -ra extensions <<<"${line#:files}"
                _brenta_files "$current" "${extensions[@]}"
                ;;
            *)
                printf -v word '%q' "${line%%$'\t'*}"
                COMPREPLY+=("$word")
                ;;
        esac
    done < <("$1" __complete "${COMP_WORDS[@]:1:COMP_CWORD-1}" "$current" 2>/dev/null)
    # A key of the registry goes on behind its root.
    [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *\\ ]] || compopt -o nospace
}

# _brenta_files CURRENT EXTENSION...  - folders, and the files with these extensions; all files without any
_brenta_files() {
    local current=$1 file extension
    shift
    while IFS= read -r file; do
        for extension in "$@"; do
            [[ -d $file || ${file,,} == *."$extension" ]] || continue
            COMPREPLY+=("$file")
            break
        done
        [ $# -gt 0 ] || COMPREPLY+=("$file")
    done < <(compgen -f -- "$current")
}

complete -F _brenta brenta
