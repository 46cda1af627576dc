#!/bin/sh
# porting.sh NM LIBRARY GUIDE
#
# The tables of GUIDE that say what an operation has to do list exactly the operations that LIBRARY leaves to its platform.
set -eu
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT

# What has a version belongs to a system library; the rest is the compiler's own, or the platform's.
"$1" -D -C --undefined-only "$2" >"$directory/symbols"
sed -E -e 's/^ *[A-Za-z] //' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
    "$directory/symbols" | grep -vE '@|^_ITM_|^__gmon_start__$' | sort -u >"$directory/undefined"
[ -s "$directory/undefined" ] || { echo "$2 leaves nothing to a platform"; exit 1; }
sed -nE '/^\| operation \| what it has to do \|$/,/^$/ s/^\| `([^`]+)` \|.*/\1/p' "$3" | sort -u >"$directory/listed"
diff "$directory/undefined" "$directory/listed"

# The symbols that it explains are such operations, too; one that ends in dots is how several begin.
"$1" -D --undefined-only "$2" | sed -E 's/^ *[A-Za-z] //' >"$directory/mangled"
grep -oE '`_Z[A-Za-z0-9_]+(\.\.\.)?`' "$3" | tr -d '`' | sort -u >"$directory/explained"
[ -s "$directory/explained" ] || { echo "$3 explains no symbol"; exit 1; }
while read -r symbol; do
    case $symbol in
    *...) grep -q "^${symbol%...}" "$directory/mangled" ;;
    *) grep -qx "$symbol" "$directory/mangled" ;;
    esac || { echo "$2 does not ask for $symbol"; exit 1; }
done <"$directory/explained"
