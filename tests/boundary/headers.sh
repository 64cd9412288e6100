#!/bin/bash
# headers.sh SOURCE_DIR WIDTH COMPILER LANGUAGE STANDARD: each public header compiles by itself and
# without a warning, twice in one file too, and the records lie as record_layout.c has them.
# Result 77: this compiler has no headers of the C library for that width.
set -uo pipefail
source=$1 width=$2 compiler=$3 language=$4 standard=$5
compile() {
    "$compiler" "-m$width" -x "$language" "-std=$standard" -fsyntax-only -I "$source/include" \
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-qual -Wundef -Werror "$@"
}
if ! echo '#include <stdint.h>' | compile - 2>/dev/null; then
    echo "$compiler can't compile for $width bits here (gcc-multilib, g++-multilib)"
    exit 77
fi

failed=0 headers=0
for header in "$source"/include/vellim/*.h; do
    headers=$((headers + 1))
    printf '#include "%s"\n#include "%s"\n' "$header" "$header" | compile - || failed=1
done
compile "$source/tests/boundary/record_layout.c" || failed=1
echo "$headers headers and the record layout: $language $standard, $width bits, $compiler"
[ "$headers" -ge 1 ] && exit $failed
