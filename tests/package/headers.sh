#!/bin/sh
# headers.sh INSTALLED LIBDIR COMPILER DIRECTORY: every header of the tree INSTALLED compiles alone, with nothing else of the
# project; also with a header of each name before it on the path that is somebody else's, in the new DIRECTORY.
set -eu
installed=$1 libdir=$2 compiler=$3 strange=$4

rm -rf "$strange"
mkdir -p "$strange"
for header in $(find "$installed/include/FrequencyHandler" -name '*.h' -printf '%P '); do
    mkdir -p "$strange/${header%/*}"
    for name in "$header" "${header##*/}"; do
        echo '#error "this is a header of somebody else"' >"$strange/$name"
    done
done

flags=$(PKG_CONFIG_LIBDIR="$installed/$libdir/pkgconfig" pkg-config --cflags frequencyhandler-standalone)
count=0
for header in $(find "$installed/include/FrequencyHandler" -name '*.h'); do
    # shellcheck disable=SC2086
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -x c++ -I "$strange" $flags -include "$header" /dev/null
    count=$((count + 1))
done
[ "$count" -gt 30 ] || { echo "only $count headers are installed" >&2; exit 1; }
