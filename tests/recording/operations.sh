#!/bin/sh
# operations.sh NM LIBRARY RECORDER
#
# Each operation that the library leaves to its platform passes through the recorder, but for what only builds and
# destroys objects, describes types, or does nothing.
set -eu
"$1" -D --undefined-only "$2" | awk '{ print $NF }' |
    grep -E '^(_ZN15InterfaceBroker|_ZN14CModuleManager|_ZN15ModuleInterface|_ZN9OrbiTrace|_ZN19ITemperatureHandler|C[A-Z][A-Za-z]+_)' |
    grep -vE '^_ZN15ModuleInterface(C2|D2|[0-9]+onPhase(Stop|Start|FrameformatLoad|EndFrameformatLoad|PreFrameformatLoad|SetRadioChannelNearEndFinished)Ev)|^_ZN9OrbiTraceD1Ev$' |
    while read -r operation; do
        "$1" -D --defined-only "$3" | grep -q " T $operation\$" || { echo "not recorded: $operation"; exit 1; }
        echo "$operation"
    done
