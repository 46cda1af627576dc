#!/bin/sh
# leaks.sh EXAMPLE INSTALLED LIBDIR COMPILER OBSERVER DIRECTORY
#
# Builds OBSERVER on the minimal platform EXAMPLE with the leak detector, against the tree INSTALLED, in a new DIRECTORY. The one
# leak that there is is found; and with the suppressions that are installed, none.
set -eu
example=$1 installed=$2 libdir=$3 compiler=$4 observer=$5 directory=$6

rm -rf "$directory"
mkdir -p "$directory"
headers=$installed/include/FrequencyHandler
"$compiler" -std=c++17 -g1 -fsanitize=address -I "$headers/interface" -I "$headers/contract" -I "$example" -rdynamic \
    "$example"/Minimal[PDT]*.cpp "$observer" -o "$directory/observer" \
    -L "$installed/$libdir" -lFrequencyHandler -Wl,-rpath,"$installed/$libdir"

if "$directory/observer" >"$directory/found" 2>&1; then
    echo "without suppressions nothing was found"
    exit 1
fi
grep -q "^channel 1: 7442000 kHz" "$directory/found"
grep -q "IFrequencyHandler::registerObserver" "$directory/found" || { cat "$directory/found"; exit 1; }
LSAN_OPTIONS=suppressions=$installed/share/frequencyhandler/frequencyhandler.lsan.supp:print_suppressions=0 "$directory/observer"
