#!/bin/sh
# other_interface.sh COMPILER LIBRARY PLATFORM LOAD DIRECTORY SOURCES [run]
#
# What linker and loader say when headers and library have different binary interfaces, as docs/loading.md tells it: of a
# program with modules, a component with the interfaces alone, one with C records alone, a host in C, and a platform.
# LIBRARY has the present interface; one of the next is made here from its SOURCES. LOAD loads a platform and a library.
# What has to be run is looked at with `run` alone.
set -eu
compiler=$1 library=$2 platform=$3 load=$4 directory=$5 sources=$6 run=${7-}
library_sources=$sources/PlatformServices/FrequencyHandler
rm -rf "$directory"
mkdir -p "$directory/next" "$directory/objects"
cd "$directory"
LC_ALL=C
export LC_ALL

# compile INTERFACE OPTION...
compile() {
    interface=$1
    shift
    "$compiler" -std=c++17 -O0 -fPIC -DFREQUENCYHANDLER_BINARY_INTERFACE="$interface" -I"$library_sources/interface" \
        -I"$library_sources/private" -I"$library_sources/private/qm7373" -I"$sources/Platform/contract" \
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror "$@"
}
# refused WHAT SAID COMMAND...: the command fails, and says that
refused() {
    case=$1 expected=$2
    shift 2
    if "$@" >said 2>&1; then
        echo "$case: nobody minds"
        exit 1
    fi
    grep -q -- "$expected" said || { echo "$case: expected \"$expected\""; cat said; exit 1; }
}
# accepted WHAT COMMAND...
accepted() {
    case=$1
    shift
    "$@" >said 2>&1 || { echo "$case is refused"; cat said; exit 1; }
}

# Headers are included in any order, in one source: no attribute comes too late.
for header in "$library_sources"/interface/*.h "$sources"/Platform/contract/*.h "$library_sources"/private/FrequencyHandler*.h \
    "$library_sources"/private/LoCancellation.h "$library_sources"/private/Refusal.h; do
    echo "#include \"$header\""
done >forwards.cpp
sort -r forwards.cpp >backwards.cpp
for order in forwards backwards; do
    accepted "including all headers $order" compile 1 -fsyntax-only $order.cpp
done

# The library of the next interface: its sources agree on their names.
for source in "$library_sources"/private/*.cpp "$library_sources"/private/qm7373/*.cpp; do
    compile 1 -DFREQUENCYHANDLER_WITHOUT_HANDSHAKE -fvisibility=hidden -c "$source" -o "objects/$(basename "$source").o"
done
next=$directory/next/libFrequencyHandler.so.1
"$compiler" -shared objects/*.o -Wl,--version-script="$library_sources/exports.map" -Wl,-z,now \
    -Wl,-soname,libFrequencyHandler.so.1 -o "$next"

cat >program.cpp <<'end'
#include "FrequencyHandler.h"
int main() {
    FrequencyHandler module(1, FrequencyHandler::RfModule);
    return module.setTxFrequency(7442000);
}
end
cat >component.cpp <<'end'
#include "IFrequencyHandler.h"
struct Listener : Observer<IFrequencyHandler> {
    void onChange(IFrequencyHandler* subject) override { frequency = subject->getFrequency(); }
    unsigned long frequency = 0;
};
Observer<IFrequencyHandler>& listener() {
    static Listener listener;
    return listener;
}
end
cat >records.cpp <<'end'
#include "IFrequencyHandler_c.h"
EAFResult listen(FrequencyHandlerCStruct* record, IFrequencyObserver* observer);
EAFResult listen(FrequencyHandlerCStruct* record, IFrequencyObserver* observer) {
    return record->registerObserver(record->handler, observer);
}
end
cat >host.cpp <<'end'
#include "FrequencyHandler_c.h"
int main() { return FrequencyHandler_GetVersion() == FREQUENCYHANDLER_VERSION ? 0 : 1; }
end
echo 'int main() {}' >main.cpp

link() { # link INTERFACE OBJECTS LIBRARY
    compile "$1" -Wl,--no-as-needed $2 "$3" "$platform" \
        -Wl,-rpath,"$(dirname "$library")" -o linked
}
accepted "a program of the present interface" link 0 program.cpp "$library"
refused "a program of the next interface" 'undefined reference to .*FrequencyHandler\[abi:interface1\]' \
    link 1 program.cpp "$library"

# A component: what is looked for is the library of its number.
for what in component records; do
    for interface in 0 1; do
        compile $interface -shared $what.cpp -o "lib$what.so.$interface"
    done
    cp lib$what.so.0 lib$what.so
    accepted "a $what of the present interface" link 0 "main.cpp ./lib$what.so" "$library"
    if [ "$run" ]; then
        accepted "loading a $what of the present interface" ./linked
        cp lib$what.so.1 lib$what.so
        refused "loading a $what of the next interface" \
            "symbol lookup error: ./lib$what.so: undefined symbol: FrequencyHandler_BinaryInterface_1" ./linked
        refused "loading a $what of the next interface at run time" \
            "undefined symbol: FrequencyHandler_BinaryInterface_1" "$load" "./lib$what.so" "$library"
    fi
    refused "a $what of the next interface" 'undefined reference to .FrequencyHandler_BinaryInterface_1' \
        link 0 "main.cpp ./lib$what.so.1" "$library"
    compile 1 -DFREQUENCYHANDLER_WITHOUT_HANDSHAKE -shared $what.cpp -o lib$what.so
    accepted "a $what that does without the handshake" link 0 "main.cpp ./lib$what.so" "$library"
done

accepted "a host in C of the present interface" link 0 host.cpp "$library"
refused "a host in C of the next interface" 'undefined reference to .FrequencyHandler_BinaryInterface_1' \
    link 1 host.cpp "$library"
accepted "a host in C that does without the handshake" link 1 "-DFREQUENCYHANDLER_WITHOUT_HANDSHAKE host.cpp" "$library"

# The other way round: the headers are older than the library.
undefined=-Wl,--unresolved-symbols=ignore-in-shared-libs
for what in program host; do
    refused "a $what that is older than the library" 'undefined reference to .FrequencyHandler_BinaryInterface_0' \
        compile 0 $what.cpp "$next" $undefined -o linked
done
[ "$run" ] || exit 0

# A program that was linked with the next library, where there is only the present one.
compile 1 host.cpp "$next" $undefined -o linked
refused "a program of the next library" \
    'error while loading shared libraries: libFrequencyHandler.so.1: cannot open shared object file' ./linked
refused "loading the next library at run time" 'libFrequencyHandler.so.1: cannot open shared object file' \
    "$load" "$platform" libFrequencyHandler.so.1
# The present platform beside the next library; the other way round is a test of its own.
refused "a platform that is older than the library" 'undefined symbol: _Z.*B10interface1' \
    "$load" "$platform" "$next"
