#!/bin/sh
# events.sh PROJECT
#
# The pages of PROJECT describe every event of --json that its program writes.
set -eu
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT

grep -rhoE '\{?"event", *"[a-z_]+"|(writeJsonSteps\(out|rowEvent\(), "[a-z_]+"|rowEvent\("[a-z_]+"' \
    --include='*.cpp' "$1/radioctl" | sed -E 's/.*"([a-z_]+)"$/\1/' | sort -u >"$directory/written"
[ "$(wc -l <"$directory/written")" -ge 40 ] || { echo "found hardly any events in the sources"; exit 1; }
awk '/^## / { inside = /^## Events of `--json`$/ } inside' "$1"/docs/*.md \
    | sed -nE 's/^\| `([a-z_]+)` \|.*/\1/p' | sort -u >"$directory/described"
comm -23 "$directory/written" "$directory/described" >"$directory/missing"
[ ! -s "$directory/missing" ] || { echo "no page describes these events:"; cat "$directory/missing"; exit 1; }
