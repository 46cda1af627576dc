#!/bin/sh
# headers.sh INSTALLED LIBDIR COMPILER: every header of the tree INSTALLED compiles alone, with nothing else of the project.
set -eu
installed=$1 libdir=$2 compiler=$3

flags=$(PKG_CONFIG_LIBDIR="$installed/$libdir/pkgconfig" pkg-config --cflags frequencyhandler-standalone)
count=0
for header in $(find "$installed/include/FrequencyHandler" -name '*.h'); do
    # shellcheck disable=SC2086
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -x c++ $flags -include "$header" /dev/null
    count=$((count + 1))
done
[ "$count" -gt 30 ] || { echo "only $count headers are installed" >&2; exit 1; }
