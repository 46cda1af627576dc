#!/bin/sh
# page.sh BROWSER RADIOCTL BOARDS PROBE
#
# Has RADIOCTL write its pages, and opens each of them in a headless browser: it must log nothing, ask nobody for
# anything, and draw every picture. Pages that are broken on purpose show that each of these is seen.
set -eu

browser=$1
radioctl=$2
boards=$3
probe=$4

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
cd "$room"
export HOME="$room"

# inspect PAGE SCHEME: what is wrong with it, how many pictures it has, and how it was shown, one thing on each line. The
# scheme is that of the colours which the user prefers, light or dark.
inspect() {
    case $2 in dark) scheme=0 ;; *) scheme=1 ;; esac # as the browser counts them
    { grep -v '^</body>$\|^</html>$' "$1"; echo '<script>'; cat "$probe"; echo '</script></body></html>'; } >opened.html
    rm -rf profile net.json
    # Whatever a page asks for stays on this machine, and in the log of the network.
    timeout 60 "$browser" --headless --no-sandbox --disable-gpu --disable-dev-shm-usage \
        --disable-background-networking --no-first-run --host-resolver-rules='MAP * ~NOTFOUND' \
        --user-data-dir="$room/profile" --log-net-log="$room/net.json" --enable-logging=stderr \
        --blink-settings=preferredColorScheme=$scheme --virtual-time-budget=5000 --window-size=1100,1400 \
        --dump-dom "file://$room/opened.html" \
        >dom 2>log || { echo "complaint: the browser failed"; cat log; }
    grep -o 'CONSOLE.*' log | sed 's/^/complaint: /' || true
    grep -oE '"url":"[^"]*"' net.json | sort -u | sed 's/^/complaint: request /' || true
    sed -n 's/^.*<pre>//; s/<[/]pre>.*$//; /^complaint: /p; /^pictures: /p; /^scheme: /p' dom
}

# is_fine PAGE PICTURES
is_fine() {
    for shown in light dark; do
        found=$(inspect "$1" $shown)
        [ "$found" = "pictures: $2
scheme: $shown" ] || { echo "$1, shown $shown, should have $2 pictures and no fault:"; echo "$found"; exit 1; }
    done
}

cp "$boards"/lo-leakage-18ghz.toml board.toml
"$radioctl" calibrate board.toml --channel 1 --html fit.html >fit.log || { cat fit.log; exit 1; }
# A search of few points leaves more between them than the limits of the board allow; here its page is what counts.
sed '/^leakage = /d; /^leakage_at_nodes = /d' "$boards"/lo-leakage-18ghz.toml >board.toml
set -- --method search --step 467500 --temperatures=-33,55 --restart
"$radioctl" calibrate board.toml --channel 1 "$@" --html calibration.html >calibrate.log ||
    { cat calibrate.log; exit 1; }
"$radioctl" thermal "$boards"/iq-compensation-18ghz.toml "$boards"/logs/cold-start.csv --html thermal.html >thermal.log ||
    { cat thermal.log; exit 1; }
# What the runs say together: the yield, and a picture for each of the 24 measurements with the least room.
if "$radioctl" store import /dev/null --store sqlite:units.sqlite >store.log 2>&1; then
    for again in 1 2; do
        "$radioctl" calibrate "$boards"/lo-leakage-18ghz.toml --channel 1 --restart --out tables.csv --journal again.journal \
            --store sqlite:units.sqlite >>store.log || { cat store.log; exit 1; }
    done
    "$radioctl" store report --store sqlite:units.sqlite --html report.html >>store.log || { cat store.log; exit 1; }
    is_fine report.html 25
fi
# A laboratory of few transmitters: the trade-off, and how levels and probes spread.
cat >lab.toml <<END
board = "$boards/lo-leakage-18ghz.toml"
channel = 1
count = 3
seed = 1
limits = { leakage = -50 }
settings = [{ name = "coarse & quick", method = "search", step = 467500 }, { name = "fit", probes = 300 }]
END
"$radioctl" laboratory lab.toml --html laboratory.html >laboratory.log || { cat laboratory.log; exit 1; }
is_fine laboratory.html 3
is_fine fit.html 9
is_fine calibration.html 8
is_fine thermal.html 7

# badly FAULT OPTION...: writes bad.html, of a calibration whose points are not all good, as the page has to say.
# Where some failed, nothing is drawn between the points; where all did, only what leaks.
badly() {
    fault=$1
    shift
    status=0
    "$radioctl" calibrate board.toml --channel 1 --html bad.html "$@" >bad.log || status=$?
    [ "$status" = 1 ] || { echo "exit code $status instead of 1:"; cat bad.log; exit 1; }
    grep -q "<li>.*$fault" bad.html || { echo "the page should say: $fault"; exit 1; }
}

head -n 300 board.channel-1.journal >cut.journal
badly 'failed, the journal ends here' --offline cut.journal
is_fine bad.html 7
badly 'edge, I ended at the low edge' "$@" --i-range -300 1000
is_fine bad.html 8
badly 'failed, the high-range detector was never read' "$@" --detector high --no-qualify
is_fine bad.html 2
badly 'edge, the best I is about' --restart --i-range -400 1000
is_fine bad.html 9

# The first page with faults, each of which must be seen.
sed -e 's#^<body>#&<script>missing();</script>#' \
    -e 's#^<body>#&<script>navigator.sendBeacon("http://page.invalid/seen");</script>#' \
    -e 's#^<body>#&<img src="http://page.invalid/logo.png" alt=""/><img src="calibration.html" alt=""/>#' \
    -e 's#<svg role="img" id="before"#& style="height: 10px"#' \
    -e 's#</body>#<script>document.querySelectorAll("svg\#between g[id*=plot] *").forEach((e) => e.remove());</script>\n&#' \
    -e 's#id=.after-gpPt6.#id="nothing"#' \
    -e 's#^figure, tr, .warning#.nothing, .warning#' \
    -e 's#--faint: \#aaa#--faint: \#444#' \
    -e 's#<div class="verdict#<p></p>&#' \
    calibration.html >faulty.html
inspect faulty.html dark >seen
for fault in 'CONSOLE.*missing is not defined' 'request .*http://page.invalid/seen' \
    'request .*http://page.invalid/logo.png' 'refers to calibration.html' 'picture before is too small' \
    'hard to read: p$' 'may be torn apart: figure' 'may be torn apart: tr' 'the verdict does not come first' \
    'picture between is empty' 'picture after has a mark without a shape'; do
    grep -q "^complaint: .*$fault" seen || { echo "not seen in a faulty page: $fault"; cat seen; exit 1; }
done
# Only the faults that are there.
if grep -q 'picture convergence' seen; then
    cat seen
    exit 1
fi
