#!/bin/sh
# same_stories.sh STORIES REFERENCE PROGRAM...: two builds, here the host's and the target's, tell the same STORIES.
set -eu
stories=$1 reference=$2
shift 2
[ -x "$reference" ] || { echo "$reference is not built"; exit 1; }

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
"$reference" "$stories" >"$directory/reference"
"$@" "$stories" >"$directory/program"
cmp "$directory/reference" "$directory/program" ||
    { diff "$directory/reference" "$directory/program" | head -n 20; exit 1; }
