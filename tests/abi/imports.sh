#!/bin/sh
# imports.sh NM LIBRARY ALLOWED
#
# Each dynamic symbol that LIBRARY needs matches one of the patterns in ALLOWED.
set -eu

# Two steps, because the shell does not see when the first part of a pipe fails.
listing=$("$1" -D -C --undefined-only "$2")
symbols=$(echo "$listing" | sed -E 's/^[0-9a-f]* *[A-Za-z] //')
[ -n "$symbols" ] || { echo "$2 needs nothing"; exit 1; }

strangers=$(echo "$symbols" | grep -vxEf "$3" | sort -u || true)
if [ -n "$strangers" ]; then
    echo "not allowed by $3:"
    echo "$strangers"
    exit 1
fi
