#!/bin/sh
# hardening.sh CMAKE PROJECT BUILD ARCHITECTURE READELF [TOOLCHAIN]
#
# Builds library and stand-alone platform in BUILD with the distribution's flags for ARCHITECTURE, all hardening on, and has
# hardening-check look at them. On 32-bit ARM the library keeps its budget of size all the same.
set -eu
cmake=$1 project=$2 build=$3 architecture=$4 readelf=$5 toolchain=${6:-}
export DEB_BUILD_MAINT_OPTIONS=hardening=+all DEB_HOST_ARCH="$architecture"
flags() { dpkg-buildflags --get "$1"; }

"$cmake" -S "$project" -B "$build" -G Ninja --log-level=WARNING ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} \
    -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="$(flags CPPFLAGS) $(flags CXXFLAGS)" -DCMAKE_SHARED_LINKER_FLAGS="$(flags LDFLAGS)" \
    -DFREQUENCYHANDLER_RADIOCTL=OFF -DFREQUENCYHANDLER_PYTHON=OFF -DFREQUENCYHANDLER_TESTS=OFF >/dev/null
"$cmake" --build "$build" --target frequencyhandler --target standalone_platform >"$build/log" 2>&1 || { cat "$build/log"; exit 1; }

looked=0
for library in "$build"/lib/libFrequencyHandler.so "$build"/lib/*/libFrequencyHandler.so \
    "$build"/lib/libStandalonePlatform.so "$build"/lib/*/libStandalonePlatform.so; do
    [ -e "$library" ] || continue
    looked=$((looked + 1))
    # What disassembles code here may not know the target's.
    found=$(hardening-check "$(realpath "$library")" 2>/dev/null || true)
    for wanted in "Stack protected: yes" "Read-only relocations: yes" "Immediate binding: yes"; do
        echo "$found" | grep -q "^ $wanted" || { echo "$found"; echo "${library##*/} has not: $wanted"; exit 1; }
    done
done
[ $looked -eq 2 ] || { echo "$looked libraries were built"; exit 1; }

if [ "$architecture" = armhf ]; then
    text=$("$readelf" --sections --wide "$build/lib/libFrequencyHandler.so" | awk '$2 == ".text" || $3 == ".text" { for (at = 1; $at != ".text"; ++at); print $(at + 4) }')
    [ -n "$text" ] || { echo "libFrequencyHandler.so has no .text"; exit 1; }
    text=$(printf '%d' "0x$text")
    echo ".text of the hardened library: $text bytes"
    [ "$text" -le 32768 ] || { echo "expected 32768 bytes at most"; exit 1; }
fi
