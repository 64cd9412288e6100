#!/bin/bash
# refused.sh SOURCE_DIR HEADER INCLUDES COMPILER: HEADER is there, but a file that sees the folders of
# INCLUDES (a list with semicolons) finds the public headers and not this one.
set -uo pipefail
source=$1 header=$2 includes=$3 compiler=$4
fail() {
    echo "$*" >&2
    exit 1
}
compile() {
    printf '#include "%s"\n' "$1" |
        "$compiler" -x c++ -std=c++20 -fsyntax-only "${folders[@]/#/-I}" - 2>&1
}
[ -f "$source/$header" ] || fail "$header is gone: name another one"
IFS=';' read -ra folders <<<"$includes"
compile vellim/base.h || fail "$includes is not what a file of the library sees"
message=$(compile "$header") && fail "$header can be included"
grep -qE "$header.*(No such file|not found)" <<<"$message" || fail "$message"
