#!/bin/sh
# symbols.sh NM LIBRARY --defined-only|--undefined-only ALLOWED [REQUIRED]
#
# Holds the dynamic symbols of LIBRARY against two lists: each must match one of the patterns in ALLOWED, and
# each line of REQUIRED must be one of them.
set -eu

# Two steps, because the shell does not see when the first part of a pipe fails.
listing=$("$1" -D -C "$3" "$2")
symbols=$(echo "$listing" | sed -E 's/^[0-9a-f]* *[A-Za-z] //')
[ -n "$symbols" ] || { echo "$2 has no such symbols"; exit 1; }

strangers=$(echo "$symbols" | grep -vxEf "$4" | sort -u || true)
if [ -n "$strangers" ]; then
    echo "not allowed by $4:"
    echo "$strangers"
    exit 1
fi

if [ $# -gt 4 ]; then
    while IFS= read -r required; do
        echo "$symbols" | grep -qxF -e "$required" || { echo "missing: $required"; exit 1; }
    done < "$5"
fi
