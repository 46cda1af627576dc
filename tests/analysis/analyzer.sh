# analyzer.sh COMPILER FINDINGS: has GCC's analyzer look at every source of library and platform, from the root of the
# project, and fails unless FINDINGS lists whatever it says.
set -eu
compiler=$1
findings=$2

contract="-I Platform/contract -I PlatformServices/FrequencyHandler/interface"
found=$(mktemp)
trap 'rm -f "$found"' EXIT
for source in $(find PlatformServices Platform -name '*.cpp' | sort); do
    # The analyzer looks at more with some optimisation.
    "$compiler" -std=c++17 -O1 -fanalyzer -fdiagnostics-plain-output -fdiagnostics-path-format=none $contract \
        -I PlatformServices/FrequencyHandler/private -I Platform -c "$source" -o /dev/null 2>"$found"
    sed -n 's/.*\[\(-Wanalyzer-[a-z-]*\)\]$/\1/p' "$found" | sort -u | while read -r kind; do
        if ! grep -qxF -e "$source $kind" "$findings"; then
            grep -F -e "[$kind]" "$found"
            exit 1
        fi
    done
done
