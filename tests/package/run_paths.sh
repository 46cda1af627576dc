#!/bin/sh
# run_paths.sh READELF HOME FOLDER...: where the binaries under the folders have their libraries looked for is either beside
# themselves ($ORIGIN) or below HOME: nowhere else, and never in the current folder, which an empty or relative element means.
set -eu
readelf=$1
home=$2
shift 2

find "$@" -type f -exec "$readelf" -dW {} + 2>/dev/null |
    awk -v home="$home/" '
        /^File: / { file = substr($0, 7); ++files }
        /\((RPATH|RUNPATH)\)/ {
            ++paths
            path = $0
            sub(/^[^[]*\[/, "", path)
            sub(/\]$/, "", path)
            count = split(path, elements, ":")
            if (path == "") { count = 1; elements[1] = "" }
            for (i = 1; i <= count; ++i) {
                if (elements[i] !~ /^\$ORIGIN($|\/)/ && index(elements[i] "/", home) != 1) {
                    print file ": looks for libraries in \"" elements[i] "\", of \"" path "\""
                    bad = 1
                }
            }
        }
        END {
            if (files == 0) { print "no file was read"; bad = 1 }
            exit bad
        }'
