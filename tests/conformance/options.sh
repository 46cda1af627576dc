#!/bin/sh
# options.sh PROGRAM GUIDE...
#
# What PROGRAM, a platform before the rules, does with the words of its command line; and the rules that each GUIDE names are
# among those that it lists.
set -eu
program=$1
shift
guides=$(realpath "$@")
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory"

# ends CODE TEXT WORD...: it ends so, and writes that somewhere
ends() {
    expected=$1 text=$2
    shift 2
    code=0
    "$program" "$@" >said 2>&1 || code=$?
    [ "$code" = "$expected" ] || { echo "$*: ended with $code, expected $expected"; cat said; exit 1; }
    grep -qF -e "$text" said || { echo "$*: expected \"$text\""; cat said; exit 1; }
}

ends 2 'not understood: --nonsense, expected one of those that --help names' --nonsense
ends 2 'not understood: --deadline' --deadline
for seconds in 0 -1 1.5 many 86401 99999999999999999999 ''; do
    ends 2 "--deadline $seconds: expected seconds from 1 to 86400" --deadline "$seconds"
done
ends 2 'no rule begins with "nothing.", expected one of --list' --only nothing.
hostile=$(printf 'a\033[31m\302\233\342\200\256\nz')
ends 2 'not understood: a\x1b[31m\xc2\x9b\xe2\x80\xae\x0az, expected' "$hostile"
ends 2 'no rule begins with "a\x1b[31m\xc2\x9b\xe2\x80\xae\x0az", expected' --only "$hostile"
ends 2 '--here is for one rule, expected --only with its whole name' --here
ends 2 '--here is for one rule, expected --only with its whole name' --here --only trace.
ends 0 '--deadline N' --help
ends 0 'calibration.nodes-are-met' --list
ends 0 '1 rules: 1 hold, 0 do not, 0 could not be looked at.' --only calibration.nodes-are-met
ends 0 '1 rules: 1 hold, 0 do not, 0 could not be looked at.' --here --only calibration.nodes-are-met
ends 0 '1 rules: 1 hold, 0 do not, 0 could not be looked at.' --deadline 86400 --only calibration.nodes-are-met
ends 0 '{"rule":"calibration.nodes-are-met","state":"holds",' --json --only calibration.nodes-are-met

# What is listed is what is looked at.
"$program" --list | sed -n 's/^\([a-z]\)/\1/p' >listed
"$program" | sed -nE 's/^(holds|BROKEN|not seen) +//p' >looked
diff listed looked

# What guides name is there.
groups=$(sed 's/\..*//' listed | sort -u | paste -sd '|')
for guide in $guides; do
    grep -oE "\`($groups)\\.[a-z-]+\`" "$guide" | tr -d '`' | sort -u >named
    [ -s named ] || { echo "$guide names no rule"; exit 1; }
    grep -vxF -f listed named >unknown || continue
    echo "$guide names what is no rule:"
    cat unknown
    exit 1
done
