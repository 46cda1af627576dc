#!/bin/sh
# symbols.sh PROJECT VERSION ARCHITECTURE LIBRARY DIRECTORY: the library exports what debian/ has recorded for that processor.
set -eu
mkdir -p "$5"
cd "$1"
dpkg-gensymbols -a"$3" -plibfrequencyhandler0 "-v$2" -c1 -q -Idebian/libfrequencyhandler0.symbols -e"$4" -O"$5/symbols"
