#!/bin/sh
# relive.sh RECORDING-BUILD RECORDING-EMULATOR REPLAYING-BUILD REPLAYING-EMULATOR [KEPT]
#
# Every recording that is kept is made anew by the programs of one build and lived by another's, maybe on another processor;
# emulators are words, or empty. None of KEPT is nobody's: each is one that is made.
set -eu
recording=$1 recording_emulator=$2 replaying=$3 replaying_emulator=$4 kept=${5:-}
[ -x "$recording/bin/recorded_life" ] || { echo "$recording/bin/recorded_life is not built"; exit 1; }
[ -x "$replaying/libexec/radioctl/radioctl-replay" ] || { echo "$replaying/libexec/radioctl/radioctl-replay is not built"; exit 1; }

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
# shellcheck disable=SC2086
"$(dirname "$0")/keep" "$recording" "$directory" $recording_emulator
lived=0
for file in "$directory"/*.rec; do
    # shellcheck disable=SC2086
    said=$($replaying_emulator "$replaying/libexec/radioctl/radioctl-replay" -- "$file" || true)
    case $said in
    "outcome identical"*) lived=$((lived + 1)) ;;
    *) echo "$(basename "$file"): $said"; exit 1 ;;
    esac
done
echo "$lived recordings"
if [ -n "$kept" ]; then
    ls "$kept" | sed 's/\.armhf\.rec$/.rec/' | sort -u >"$directory/kept"
    (cd "$directory" && ls -- *.rec) | sort | cmp - "$directory/kept"
fi
