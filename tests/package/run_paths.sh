#!/bin/sh
# run_paths.sh READELF HOME FOLDER...: where the binaries under the folders have their libraries looked for is below the same
# folder, wherever $ORIGIN and dots lead from there, or below HOME: nowhere else, and never in the current folder, which an empty
# or relative element means. Each folder has at least one.
set -eu
readelf=$1
home=$2
shift 2

look() {
    find "$(cd "$1" && pwd -P)" -type f -exec "$readelf" -dW /dev/null {} + 2>/dev/null |
        awk -v home="$home/" -v whole="$(cd "$home" 2>/dev/null && pwd -P || echo "$home")/" -v folder="$(cd "$1" && pwd -P)" '
            # The path without dots; "" when it leads above the root.
            function resolved(path,    parts, count, i, depth, kept, text) {
                count = split(path, parts, "/")
                for (i = 1; i <= count; ++i) {
                    if (parts[i] == "..") {
                        if (--depth < 0) return ""
                    } else if (parts[i] != "" && parts[i] != ".") {
                        kept[++depth] = parts[i]
                    }
                }
                for (i = 1; i <= depth; ++i) text = text "/" kept[i]
                return text "/"
            }
            function isGood(element,    place) {
                place = element
                if (place ~ /^\$ORIGIN($|\/)/) {
                    place = file
                    sub(/\/[^\/]*$/, "", place)
                    place = place substr(element, length("$ORIGIN") + 1)
                }
                place = place ~ /^\// ? resolved(place) : ""
                return index(place, home) == 1 || index(place, whole) == 1 || index(place, resolved(folder)) == 1
            }
            # Of one file alone, readelf would not say which it is; so there is always another one.
            /^File: / { file = substr($0, 7) }
            /^Dynamic section / { ++files }
            /\((RPATH|RUNPATH)\)/ {
                path = $0
                sub(/^[^[]*\[/, "", path)
                sub(/\]$/, "", path)
                count = split(path, elements, ":")
                if (path == "") { count = 1; elements[1] = "" }
                for (i = 1; i <= count; ++i) {
                    if (!isGood(elements[i])) {
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
