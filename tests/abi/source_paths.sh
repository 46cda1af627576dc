#!/bin/sh
# source_paths.sh READELF LIBRARY SOURCE_DIRECTORY BUILD_DIRECTORY
#
# The strings of LIBRARY name source files by their path in the project, and not where it was built.
set -eu

strings=$("$1" -p .rodata "$2")

echo "$strings" | grep -qE '\] +PlatformServices/FrequencyHandler/private/FrequencyHandler\.cpp$' ||
    { echo "the trace does not name its source file"; exit 1; }

if echo "$strings" | grep -F -e "$3/" -e "$4/"; then
    exit 1
fi
