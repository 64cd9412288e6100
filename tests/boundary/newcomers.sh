#!/bin/bash
# newcomers.sh SOURCE_DIR C_PROGRAM CPP_PROGRAM: both roads bring the same pixels of every sample, and
# what isn't a TIFF file is told from one that is.
set -uo pipefail
self=$(realpath "$0")
cd "$1/samples" || exit 1
shopt -s nullglob
samples=(*.tif)
if [ ${#samples[@]} -eq 0 ]; then
    echo 'no samples' >&2
    exit 1
fi
lines=$("$2" "${samples[@]}") || exit 1
dib=$("$3" "${samples[@]}") || exit 1
echo "$lines"
diff <(echo "$lines") <(echo "$dib") || exit 1

refused() {  # refused FILE MESSAGE: the program ends with a failure and says why
    local message
    if message=$("$program" "$1" 2>&1); then
        echo "$1 was taken for a TIFF file" >&2
        exit 1
    fi
    diff <(echo "$1: $2") <(echo "$message") || exit 1
}
program=$2
refused "$self" 'Invalid byte order.'
refused no_such_file.tif 'General I/O error in reading or writting.'
