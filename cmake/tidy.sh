#!/bin/bash
# clang-tidy over every C++ source of a configured and built folder: tidy.sh BUILD_FOLDER
#
# A source that passes leaves a stamp named for the hash of all that the verdict depends on: the
# source and every file of this tree that it includes (as the build's dependency log has them), the
# checks, and the compiler flags. One that has its stamp isn't looked at again.
set -uo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
folder=$1
stamps=build/tidy
cd "$root" && mkdir -p "$stamps" || exit 1

tidy_one() { # tidy_one SOURCE FILE...: the source, and the files of the tree that it includes
    [ -f "$1" ] || return 0 # of an older state of the tree
    local stamp output
    stamp=$stamps/$(cat .clang-tidy cmake/Rooms.cmake "$@" | sha256sum | cut -c1-40)
    [ -e "$stamp" ] && return 0
    if output=$(clang-tidy --quiet -p "$folder" "$1" 2>&1); then
        : >"$stamp"
    else
        printf '%s\n' "$output" | grep -v -E '^[0-9]+ warnings?( and [0-9]+ errors?)? generated|^Suppressed'
        return 1
    fi
}
export -f tidy_one
export folder stamps

# One line a source: its path, then those of what it includes, from the tree's root on. A source
# that is built twice stands once.
ninja -C "$folder" -t deps | awk -v root="$root/" -v build="${folder#"$root"/}/" '
    function flush() { if (source != "" && !(source in seen)) print source files; seen[source] = 1 }
    /: #deps/ { flush(); source = ""; files = ""; next }
    /^    / {
        path = substr($0, 5)
        if (index(path, root) == 1) path = substr(path, length(root) + 1)
        else if (path ~ /^\//) next
        else path = build path
        if (source != "") files = files " " path
        else if (path ~ /\.cpp$/ && path !~ /^build\//) source = path
    }
    END { flush() }' >"$stamps/sources.txt"
if [ ! -s "$stamps/sources.txt" ]; then
    echo "clang-tidy: no sources found in $folder" >&2
    exit 1
fi
xargs -a "$stamps/sources.txt" -P "$(nproc)" -L 1 bash -c 'tidy_one "$@"' tidy
