# shellcheck shell=bash
# What the Windows build needs beside its packages: the source of minizip, which Debian builds for itself alone.

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
