#!/bin/sh
# other_interface.sh COMPILER LIBRARY DIRECTORY INCLUDE...
#
# A program that was compiled against headers of another binary interface is not linked with LIBRARY, and the linker says
# which it wants; against the headers of the present one it is.
set -eu
compiler=$1 library=$2 directory=$3
shift 3
mkdir -p "$directory"
cat >"$directory/program.cpp" <<'end'
#include "FrequencyHandler.h"
int main() {
    FrequencyHandler module(1, FrequencyHandler::RfModule);
    return module.setTxFrequency(7442000);
}
end
for include; do
    set -- "$@" "-I$include"
    shift
done
link() {
    "$compiler" -std=c++17 "$@" "$directory/program.cpp" "$library" -Wl,--unresolved-symbols=ignore-in-shared-libs \
        -o "$directory/program"
}
link "$@" || { echo "with the present interface it is not linked"; exit 1; }
if link -DFREQUENCYHANDLER_BINARY_INTERFACE=1 "$@" 2>"$directory/said"; then
    echo "with another interface it is linked"
    exit 1
fi
grep -q 'undefined reference to .*FrequencyHandler\[abi:interface1\]' "$directory/said" || { cat "$directory/said"; exit 1; }
