#!/bin/sh
# install.sh CMAKE BUILD PREFIX PACKAGED: what is installed from BUILD under PREFIX is what packages put under PACKAGED.
set -eu
rm -rf "$3"
"$1" --install "$2" --prefix "$3" >/dev/null

(cd "$4" && find . ! -type d | LC_ALL=C sort) >"$3.packaged"
(cd "$3" && find . ! -type d | LC_ALL=C sort) | diff "$3.packaged" -
