#!/bin/sh
# platform.sh EXAMPLE INSTALLED LIBDIR COMPILER -DCMAKE_TOOLCHAIN_FILE=FILE DIRECTORY [EMULATOR...]
#
# Builds the minimal platform that is in the tree INSTALLED in a new DIRECTORY, holds it against the rules, and tunes two
# channels with it.
set -eu
example=$1 installed=$2 libdir=$3 compiler=$4 toolchain=$5 directory=$6
shift 6

rm -rf "$directory"
mkdir -p "$directory"
cd "$directory"
cmake -G Ninja -S "$example" -B . -DCMAKE_CXX_COMPILER="$compiler" "$toolchain" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" \
    -DFrequencyHandler_DIR="$installed/$libdir/cmake/FrequencyHandler"
cmake --build .

"$@" ./minimal_conformance >rules || { cat rules; exit 1; }
tail -n 1 rules
# Of a platform that is a library the order cannot be looked at, and all else can.
sed -n 's/^not seen  //p' rules >unseen
printf '%s\n' trace.early-sources-work trace.sources-outlive-main | diff - unseen
cat >expected <<'end'
7442000 kHz: taken (0x0)
7603000 kHz: taken (0x0)
7484000 kHz: taken (0x0)
7645000 kHz: taken (0x0)
channel.1.rx.rf.frequency = 7603000
channel.1.tx.rf.frequency = 7442000
channel.2.rx.rf.frequency = 7645000
channel.2.tx.rf.frequency = 7484000
end
"$@" ./minimal_process >tuned
diff expected tuned
