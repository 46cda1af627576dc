#!/bin/sh
# left_out.sh CMAKE COMPILER PROJECT
#
# Where a target has nothing of what devices are reached with, the build says which kinds it leaves out and goes through.
set -eu
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT

"$1" -S "$3" -B "$directory" -G Ninja -D CMAKE_CXX_COMPILER="$2" -D CMAKE_BUILD_TYPE=Debug \
    -D FREQUENCYHANDLER_RADIOCTL=OFF -D FREQUENCYHANDLER_TESTS=OFF -D CMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON \
    -D LIBSENSORS_LIBRARY=OFF -D ASIO_INCLUDE_DIRECTORY=OFF >"$directory/said"
grep -o 'left out: .*' "$directory/said" >"$directory/left_out"
diff - "$directory/left_out" <<EOT
left out: iio (package libiio-dev)
left out: hwmon (package libsensors-dev)
left out: scpi (package libasio-dev)
EOT
"$1" --build "$directory" --target radio_devices >"$directory/built" || { cat "$directory/built"; exit 1; }
