#!/bin/sh
# interface.sh PROJECT LIBRARY RECORDED           holds the binary interface of LIBRARY against the recorded one
# interface.sh PROJECT LIBRARY RECORDED --record  records it anew: every client has to be compiled again after that
#
# Compared are the exported operations and, as far as these reach, the types with their members and virtual slots.
set -eu

describe() {
    abidw --exported-interfaces-only --headers-dir "$1/PlatformServices/FrequencyHandler" \
        --headers-dir "$1/Platform/contract" --drop-private-types --drop-undefined-syms \
        --no-show-locs --no-corpus-path --no-comp-dir-path --no-elf-needed --no-write-default-sizes \
        --no-parameter-names --out-file "$3" "$2"
}

if [ "${4:-}" = --record ]; then
    describe "$1" "$2" "$3"
    exit
fi
current=$(mktemp)
trap 'rm -f "$current"' EXIT
describe "$1" "$2" "$current"
abidiff "$3" "$current"
