#!/bin/sh
# porting.sh NM LIBRARY GUIDE
#
# The tables of GUIDE list exactly the operations that LIBRARY leaves to its platform.
set -eu
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT

# What has a version belongs to a system library; the rest is the compiler's own, or the platform's.
"$1" -D -C --undefined-only "$2" >"$directory/symbols"
sed -E -e 's/^ *[A-Za-z] //' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
    "$directory/symbols" | grep -vE '@|^_ITM_|^__gmon_start__$' | sort -u >"$directory/undefined"
[ -s "$directory/undefined" ] || { echo "$2 leaves nothing to a platform"; exit 1; }
sed -nE 's/^\| `([^`]+)` \|.*/\1/p' "$3" | sort -u >"$directory/listed"
diff "$directory/undefined" "$directory/listed"
