#!/bin/sh
# debian.sh CPACK BUILD VERSION ARCHITECTURE
#
# Makes the Debian packages of BUILD and looks at what would keep them from being installed and used.
set -eu
cpack=$1 build=$2 version=$3 architecture=$4
fail() {
    echo "$1"
    exit 1
}

cd "$build"
"$cpack" --config CPackConfig.cmake -B packages >packages.log 2>&1 || { cat packages.log; exit 1; }
runtime=packages/frequencyhandler_${version}_$architecture.deb
development=packages/frequencyhandler-dev_${version}_$architecture.deb

depends=$(dpkg-deb --field "$runtime" Depends)
for library in libc6 libstdc++6 libgcc-s1 libedit2 libtomlplusplus3; do
    echo "$depends" | tr ',' '\n' | grep -qE "^ *$(echo "$library" | sed 's/+/\\+/g') \(>= " ||
        fail "$runtime does not depend on $library, but on: $depends"
done
[ "$(dpkg-deb --field "$development" Depends)" = "frequencyhandler (= $version)" ] || fail "$development: depends"

dpkg-deb --contents "$runtime" >contents
for file in ./usr/bin/radioctl ./usr/lib/libFrequencyHandler.so.0 ./usr/lib/libStandalonePlatform.so.0 \
    ./usr/share/man/man1/radioctl.1 ./usr/share/radioctl/boards/rf-module-7ghz.toml; do
    grep -qE " $file( ->.*)?\$" contents || fail "$runtime lacks $file"
done
dpkg-deb --contents "$development" >contents
for file in ./usr/include/FrequencyHandler/interface/IFrequencyHandler.h ./usr/lib/libFrequencyHandler.so \
    ./usr/lib/cmake/FrequencyHandler/FrequencyHandlerConfig.cmake ./usr/lib/pkgconfig/frequencyhandler.pc; do
    grep -qE " $file( ->.*)?\$" contents || fail "$development lacks $file"
done

# Files are root's, writable by nobody else, and name no place outside the package.
for package in "$runtime" "$development"; do
    dpkg-deb --contents "$package" | grep -vE '^([-d]rwxr-xr-x|-rw-r--r--|lrwxrwxrwx) root/root ' &&
        fail "$package: owners or permissions"
    rm -rf unpacked
    dpkg-deb --extract "$package" unpacked
    if grep -rlF -e "$build" unpacked; then
        fail "$package names the directory that it was built in"
    fi
    (cd unpacked && dpkg-deb --info "../$package" md5sums | md5sum --check --quiet)
done
dpkg-deb --info "$runtime" postinst | grep -q ldconfig || fail "$runtime does not have the loader told"
rm -rf unpacked contents
