# shellcheck shell=bash
# Debian packages: what a command needs is installed before it starts, and nothing is asked of apt when all is there.

PACKAGES_BUILD=(g++ cmake ninja-build libcli11-dev libedit-dev libxml2-dev libxslt1-dev libcurl4-openssl-dev libminizip-dev libpacparser-dev libsqlite3-dev zlib1g-dev)
PACKAGES_TEST=(libgtest-dev pkg-config zip unzip)
PACKAGES_WINDOWS=(g++-mingw-w64-x86-64-posix cmake ninja-build dpkg-dev googletest libcli11-dev libz-mingw-w64-dev pkg-config unzip wine64 zip)
PACKAGES_CLANG=(clang)
PACKAGES_CHECK=(clang-format clang-tidy shellcheck)
PACKAGES_FUZZ=(libclang-rt-dev llvm)
PACKAGES_BENCH=(libabsl-dev libbenchmark-dev libexpat1-dev libgumbo-dev liblua5.4-dev libmimalloc-dev libmuparser-dev libpugixml-dev libtinyxml2-dev pkg-config)
PACKAGES_PACKAGE=(dpkg-dev file)
PACKAGES_DOCS=(doxygen)

# need_packages PACKAGE...
need_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "Missing packages; as root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    step "package lists" apt-update "${as_root[@]}" apt-get -q update || true
    step "packages" apt-install \
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -q install -y --no-install-recommends "${missing[@]}" || exit 1
}

# The given packages that are not installed, one a line. Elsewhere than on Debian nothing is known to be missing.
missing_packages() {
    command -v dpkg-query >/dev/null || return 0
    # dpkg-query knows nothing of provided names and fails for unknown ones; only its list counts.
    { dpkg-query --show --showformat '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true; } |
        sed -n 's/^installed //p' | sort -u |
        comm -13 - <(printf '%s\n' "$@" | sort -u)
}
