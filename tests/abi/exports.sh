#!/bin/sh
# exports.sh NM LIBRARY RECORDED
#
# The dynamic symbols that LIBRARY defines are the recorded ones, no fewer and no more: one line for each, so that
# the two constructors of a class are two lines; which is which, and what a thunk adds, the recorded binary interface
# knows. To record what is meant to change:
#   nm -D -C --defined-only LIBRARY | sed -E 's/^[0-9a-f]+ [A-Za-z] //' | LC_ALL=C sort >RECORDED
set -eu

# Two steps, because the shell does not see when the first part of a pipe fails.
listing=$("$1" -D -C --defined-only "$2")
echo "$listing" | sed -E 's/^[0-9a-f]+ [A-Za-z] //' | LC_ALL=C sort | diff "$3" - ||
    { echo "lines with < are recorded in $3, lines with > are exported"; exit 1; }
