#!/bin/sh
# example.sh cmake|make EXAMPLE INSTALLED LIBDIR COMPILER -DCMAKE_TOOLCHAIN_FILE=FILE DIRECTORY [EMULATOR...]
#
# Builds the component of EXAMPLE in a new DIRECTORY against the tree INSTALLED, runs it, and looks at what it logged.
set -eu
tool=$1 example=$2 installed=$3 libdir=$4 compiler=$5 toolchain=$6 directory=$7
shift 7

rm -rf "$directory"
mkdir -p "$directory"
cd "$directory"
case $tool in
cmake)
    cmake -G Ninja -S "$example" -B . -DCMAKE_CXX_COMPILER="$compiler" "$toolchain" \
        -DFrequencyHandler_DIR="$installed/$libdir/cmake/FrequencyHandler"
    cmake --build .
    ;;
make)
    PKG_CONFIG_LIBDIR="$installed/$libdir/pkgconfig" make -f "$example/Makefile" CXX="$compiler" \
        CXXFLAGS="-Wl,-rpath,$installed/$libdir -Wl,-rpath,."
    ;;
esac

printf '%s\n' "IFrequencyHandler_Tx_1: 7442000 kHz" "IFrequencyHandler_Tx_1: 7470000 kHz" >expected
"$@" ./platform_process >logged
diff expected logged
