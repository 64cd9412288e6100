#!/bin/bash
# install.sh CMAKE BUILD_DIR SOURCE_DIR VERSION C_COMPILER [C_FLAG...]: installed under a prefix of the
# user's choice, the library is found by pkg-config and by find_package, and programs built either
# way run on it.
set -euo pipefail
cmake=$1 build=$2 source=$3/tests/boundary/consumer version=$4 compiler=$5 flags=${*:6}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

"$cmake" --install "$build" --prefix "$prefix" >"$work/log" || { cat "$work/log" >&2; exit 1; }
# The build is left behind: nothing installed may point into it.
if grep -rlF -e "$build" "$prefix"/lib*/cmake "$prefix"/lib*/pkgconfig; then
    echo 'names a folder of the build' >&2
    exit 1
fi
soname=$(find "$prefix" -name libvellim.so.*.*)
export LD_LIBRARY_PATH=$(dirname "$soname")
expect() {  # expect PROGRAM: it prints the version
    local text
    text=$("$1")
    echo "$1: $text"
    [ "$text" = "Version $version" ]
}

export PKG_CONFIG_PATH=$LD_LIBRARY_PATH/pkgconfig
[ "$(pkg-config --modversion vellim)" = "$version" ]
# Word splitting is meant: both give several arguments.
"$compiler" -std=c11 $flags "$source/main.c" $(pkg-config --cflags --libs vellim) -o "$work/by_pkg_config"
expect "$work/by_pkg_config"

"$cmake" -G Ninja -S "$source" -B "$work/cmake" -DCMAKE_C_COMPILER="$compiler" -DCMAKE_C_FLAGS="$flags" \
    -DCMAKE_PREFIX_PATH="$prefix" -DWANTED_VERSION="$version" >"$work/log" &&
    "$cmake" --build "$work/cmake" >>"$work/log" || { cat "$work/log" >&2; exit 1; }
expect "$work/cmake/consumer"

tool=$prefix/bin/vellim
[ ! -x "$tool" ] || "$tool" --version | grep -F "$version"
