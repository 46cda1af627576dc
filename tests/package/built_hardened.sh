#!/bin/sh
# built_hardened.sh FILE...: each of these programs and shared libraries has the stack protected and its relocations read-only and
# bound at once, and each program lies anywhere in memory.
set -eu
looked=0
for file in "$@"; do
    looked=$((looked + 1))
    # What disassembles code here may not know the target's.
    found=$(hardening-check "$(realpath "$file")" 2>/dev/null || true)
    for wanted in "Position Independent Executable: \(yes\|no, regular shared library\)" "Stack protected: yes" \
        "Read-only relocations: yes" "Immediate binding: yes"; do
        echo "$found" | grep -q "^ $wanted" || { echo "$found"; echo "${file##*/} has not: $wanted"; exit 1; }
    done
    echo "${file##*/} is hardened"
done
[ "$looked" -ge 3 ] || { echo "only $looked files were looked at"; exit 1; }
