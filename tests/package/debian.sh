#!/bin/sh
# debian.sh CPACK BUILD VERSION ARCHITECTURE RECORDED UNPACKED [PYTHON]
#
# Makes the Debian packages of BUILD, looks at what would keep them from being installed and used, holds the lists of
# their files against RECORDED.runtime, RECORDED.development and, where there is one for PYTHON, such as 3.11,
# RECORDED.python, and unpacks them into UNPACKED.
set -eu
cpack=$1 build=$2 version=$3 architecture=$4 recorded=$5 unpacked=$6 python_version=${7:-}
fail() {
    echo "$1"
    exit 1
}

cd "$build"
"$cpack" --config CPackConfig.cmake -B packages >packages.log 2>&1 || { cat packages.log; exit 1; }
runtime=packages/frequencyhandler_${version}_$architecture.deb
development=packages/frequencyhandler-dev_${version}_$architecture.deb

depends=$(dpkg-deb --field "$runtime" Depends)
libraries="libc6 libstdc++6 libgcc-s1 libedit2 libtomlplusplus3 libiio0 libsensors5"
[ "$architecture" = armhf ] || libraries="$libraries libssl3 libprometheus-cpp-core1.0" # there it is left out
for library in $libraries; do
    # Where times have 64 bits on every processor, a library's package may be called after that.
    echo "$depends" | tr ',' '\n' | grep -qE "^ *$(echo "$library" | sed 's/+/\\+/g')(t64)? \(>= " ||
        fail "$runtime does not depend on $library, but on: $depends"
done
[ "$(dpkg-deb --field "$development" Depends)" = "frequencyhandler (= $version)" ] || fail "$development: depends"

packages="$runtime $development"
if [ -n "$python_version" ]; then
    python=packages/python3-frequencyhandler_${version}_$architecture.deb
    packages="$packages $python"
    depends=$(dpkg-deb --field "$python" Depends)
    for package in "frequencyhandler (= $version)" python3-numpy "python3 (>= $python_version~)" "python3 (<< 3.$((${python_version#3.} + 1)))"; do
        echo "$depends" | tr ',' '\n' | grep -qxF -e "$package" -e " $package" ||
            fail "$python does not depend on $package, but on: $depends"
    done
    for script in postinst prerm; do
        dpkg-deb --info "$python" $script | sh -n || fail "$python: $script"
    done
fi

# Debug symbols are in a package of their own, under the name by which a debugger looks for them.
symbols=packages/frequencyhandler-dbgsym_${version}_$architecture.ddeb
build_id=$(readelf --notes "$build"/lib*/libFrequencyHandler.so.0 "$build"/lib/*/libFrequencyHandler.so.0 2>/dev/null |
    sed -n 's/^ *Build ID: //p' | head -n 1)
dpkg-deb --fsys-tarfile "$symbols" |
    tar --extract --to-stdout "./usr/lib/debug/.build-id/$(echo "$build_id" | cut -c 1-2)/$(echo "$build_id" | cut -c 3-).debug" >symbols
readelf --symbols --wide symbols | grep -q tellZeroFactor || fail "$symbols does not have the functions of the library"

shlibs=$(dpkg-deb --info "$runtime" shlibs)
echo "$shlibs" | grep -qx "libFrequencyHandler 0 frequencyhandler (>= $version)" ||
    fail "who builds against $runtime will depend on: $shlibs"

files() {
    dpkg-deb --fsys-tarfile "$1" | tar --list | grep -v '/$' | sed 's/^\.//; s/Targets-[a-z]*\.cmake$/Targets-(build type).cmake/; s/_engine\.cpython-[^/]*\.so$/_engine.(python).so/' | LC_ALL=C sort
}
served='^$'
[ "$architecture" != armhf ] || served='/lib/systemd/\|/radioctl/licences/'
files "$runtime" >runtime-files
grep -v "$served" "$recorded.runtime" | diff - runtime-files || fail "$runtime has other files than $recorded.runtime says"
files "$development" | diff "$recorded.development" - || fail "$development has other files than $recorded.development says"
[ -z "$python_version" ] || files "$python" | diff "$recorded.python" - || fail "$python has other files than $recorded.python says"

# Files are root's, writable by nobody else, and name no place outside the package.
rm -rf "$unpacked"
for package in $packages; do
    dpkg-deb --contents "$package" | grep -vE '^([-d]rwxr-xr-x|-rw-r--r--|lrwxrwxrwx) root/root ' &&
        fail "$package: owners or permissions"
    dpkg-deb --extract "$package" "$unpacked"
    (cd "$unpacked" && dpkg-deb --info "$build/$package" md5sums | md5sum --check --quiet)
done
if grep -rlF -e "$build" "$unpacked"; then
    fail "a package names the directory that it was built in"
fi
dpkg-deb --info "$runtime" postinst | grep -q ldconfig || fail "$runtime does not have the loader told"
