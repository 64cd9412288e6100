#!/bin/bash
# rooms.sh SOURCE_DIR: no file climbs out of its room by a relative or an absolute path, and the
# clients of the library include none of its rooms.
set -uo pipefail
cd "$1" || exit 1
failed=0
include='^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]'
refuse() {  # refuse WHY PATTERN FOLDER...: no C or C++ file in the folders has a line of PATTERN
    local why=$1 pattern=$2 found
    shift 2
    found=$(grep -rnE --include='*.[ch]' --include='*.cpp' "$pattern" "$@")
    if [ $? -ne 1 ]; then
        printf '%s:\n%s\n' "$why" "$found" >&2
        failed=1
    fi
}
mapfile -t folders < <(find . -mindepth 1 -maxdepth 1 -type d ! -name '.*' ! -name build)
refuse 'an include that climbs' "$include(/|.*\.\./)" "${folders[@]}"
refuse 'a client that reaches inside' "$include(resources|platform|container|codec|bridge|cals|screen|notes|fax|wrappers)/" tools
exit $failed
