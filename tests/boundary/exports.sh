#!/bin/bash
# exports.sh LIBRARY COMPILER SOURCE_DIR: what the library exports, what the public headers declare
# with the export mark, and what exports.txt says are the same names.
set -uo pipefail
library=$1 compiler=$2 source=$3
export LC_ALL=C
list=$source/tests/boundary/exports.txt
failed=0

compare() {  # compare TITLE: the names on standard input, one a line, are those of the list
    sort | diff -u --label "$list" --label "$1" "$list" -
}

sort -c -u "$list" || failed=1

# The version's own node stands in the table as an absolute symbol.
nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@@VELLIM_6$/, "", $3); print $3 }' |
    compare "exported by $library" || failed=1

# The mark is an attribute once the preprocessor is through.
for header in "$source"/include/vellim/*.h; do
    printf '#include "%s"\n' "$header"
done | "$compiler" -E -P -I "$source/include" -x c - | tr '\n' ' ' |
    grep -o 'visibility("default"))) [^(;]*(' | sed 's/ *($//; s/.*[ *]//' |
    compare 'declared in include/' || failed=1

exit $failed
