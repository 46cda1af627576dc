#!/bin/sh
# same_transcript.sh REFERENCE PROGRAM BOARD SCRIPT
#
# Two builds of radioctl, here the host's and the target's, write the same bytes and end with the same code, as text
# and as JSON.
set -eu
reference=$1 program=$2 board=$3 script=$4
[ -x "$reference" ] || { echo "$reference is not built"; exit 1; }

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
transcribe() {
    code=0
    "$@" "$board" "$script" >"$transcript" 2>&1 || code=$?
    echo "exit code $code" >>"$transcript"
}
for json in "" --json; do
    transcript=$directory/reference transcribe "$reference" run --verbose $json
    transcript=$directory/program transcribe "$program" run --verbose $json
    grep -q . "$directory/reference"
    diff "$directory/reference" "$directory/program"
done
