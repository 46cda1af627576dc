#!/bin/sh
# run_paths.sh READELF HOME FOLDER...: where the binaries under the folders have their libraries looked for is either beside
# themselves ($ORIGIN) or below HOME: nowhere else, and never in the current folder, which an empty or relative element means.
# Each folder has at least one.
set -eu
readelf=$1
home=$2
shift 2

look() {
    find "$1" -type f -exec "$readelf" -dW {} + 2>/dev/null |
        awk -v home="$home/" -v folder="$1" '
            # Of one file alone, readelf does not say which it is.
            /^File: / { file = substr($0, 7) }
            /^Dynamic section / { ++files }
            /\((RPATH|RUNPATH)\)/ {
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
                if (files == 0) { print folder ": no binary was read"; bad = 1 }
                exit bad
            }'
}

bad=0
for folder in "$@"; do
    look "$folder" || bad=1
done
exit $bad
