# shellcheck shell=bash disable=SC2154
# What ./run, ./test and ./bench/run share: packages, configuring, building. To be sourced by bash
# with `root` set to the source tree.
#
# All of it is silent unless there is something to say; progress and logs go to standard error, so
# that standard output belongs to the program that is run in the end.

say() { printf 'vellim: %s\n' "$*" >&2; }

# logged NAME COMMAND...: runs a command with its output in build/logs/NAME.log, and shows that log
# when it fails.
logged() {
    local log="$root/build/logs/$1.log"
    shift
    mkdir -p "$root/build/logs"
    "$@" >"$log" 2>&1 </dev/null && return 0
    cat "$log" >&2
    say "failed: $*"
    return 1
}

# packages_for GROUP...: the package names of these groups in cmake/packages.txt.
packages_for() {
    local group
    for group in "$@"; do
        sed -n "s/^$group: *//p" "$root/cmake/packages.txt"
    done | tr -s ' ' '\n'
}

# need_packages GROUP...: installs the Debian packages of these groups that are missing. On another
# system it trusts that the tools are there.
need_packages() {
    command -v dpkg-query >/dev/null || return 0
    local wanted installed missing as_root=()
    mapfile -t wanted < <(packages_for "$@")
    # dpkg-query fails when there is one that it doesn't know.
    installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' "${wanted[@]}" 2>/dev/null |
        sed -n 's/^ii *//p') || true
    mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort -u) \
        <(sort -u <<<"$installed"))
    [ ${#missing[@]} -eq 0 ] && return 0

    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "these packages are missing; install them as root: ${missing[*]}"
            return 1
        fi
        as_root=(sudo)
    fi
    say "installing ${missing[*]}"
    logged apt-update "${as_root[@]}" apt-get -q update || say "going on with the old package lists"
    logged apt-install "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
        -o DPkg::Lock::Timeout=300 install --no-install-recommends "${missing[@]}"
}

# configure PRESET: configures build/PRESET unless that is done; ninja repeats it when it has to.
# A folder that was configured for a source tree at another place is made anew.
configure() {
    local folder="$root/build/$1"
    if [ -f "$folder/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        rm -rf "$folder"
    fi
    [ -f "$folder/build.ninja" ] && return 0
    (cd "$root" && logged "configure-$1" cmake --preset "$1")
}

# build PRESET [TARGET...]: two of these at once in one folder take turns.
build() {
    local preset=$1
    shift
    mkdir -p "$root/build"
    (
        flock 9
        configure "$preset" && logged "build-$preset" ninja -C "$root/build/$preset" "$@"
    ) 9>"$root/build/$preset.lock"
}
