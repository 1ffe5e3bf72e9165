# shellcheck shell=bash
# Completion of brenta's command line for bash. What can stand at a place the program itself tells: a line for each
# word, or ":files EXTENSION..." or ":folders".

_brenta() {
    local current line unquoted quote='' word
    local -a extensions before=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        _brenta_unquote "$word"
        before+=("$unquoted")
    done
    _brenta_unquote "${COMP_WORDS[COMP_CWORD]}"
    current=$unquoted
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
            :folders)
                compopt -o filenames
                _brenta_files -d "$current"
                ;;
            :files*)
                compopt -o filenames
                read -ra extensions <<<"${line#:files}"
                _brenta_files -f "$current" "${extensions[@]}"
                ;;
            *)
                word=${line%%$'\t'*}
                # Behind an opening quote the word goes on as it is.
                [ -n "$quote" ] || printf -v word '%q' "$word"
                COMPREPLY+=("$word")
                ;;
        esac
    done < <("$1" __complete "${before[@]}" "$current" 2>/dev/null)
    # A key of the registry goes on behind its root.
    [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *\\ ]] || compopt -o nospace
}

# _brenta_unquote WORD  - sets 'unquoted' to the word as the program will get it, and 'quote' to the quote that is still
# open at its end. Nothing in the word is run or expanded.
_brenta_unquote() {
    local rest=$1 character
    unquoted='' quote=''
    while [ -n "$rest" ]; do
        character=${rest:0:1} rest=${rest:1}
        if [[ -n $quote && $character == "$quote" ]]; then
            quote=''
        elif [[ -z $quote && $character == [\'\"] ]]; then
            quote=$character
        elif [[ $character == \\ && ($quote == '' || $quote == '"' && ${rest:0:1} == [\\\"\$\`]) ]]; then
            unquoted+=${rest:0:1} rest=${rest:1}
        else
            unquoted+=$character
        fi
    done
}

# _brenta_files -d|-f CURRENT EXTENSION...  - folders; or folders and the files with these extensions, all files without
# any. A name with a line end comes in pieces, which are no names: they are left out.
_brenta_files() {
    local kind=$1 current=$2 file path extension
    shift 2
    while IFS= read -r file; do
        path=$file
        [[ $file != \~/* ]] || path=$HOME/${file:2}
        [[ $file == "$current"* && (-e $path || -L $path) ]] || continue
        for extension in "$@"; do
            [[ -d $path || ${file,,} == *."$extension" ]] || continue
            COMPREPLY+=("$file")
            break
        done
        [ $# -gt 0 ] || COMPREPLY+=("$file")
    done < <(compgen "$kind" -- "$current")
}

complete -F _brenta brenta
