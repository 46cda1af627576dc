#!/usr/bin/env python3
"""timeline.py RADIOCTL RECORDER BOARDS [PAGE]

Writes docs/timeline.md: what a radio channel of each type says to its platform, recorded while a board of that type lives.
With PAGE: nothing is written, and what is on the page otherwise than in the run is shown.
"""
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HEAD = """\
# Timeline

What a radio channel asks of its platform and does to its hardware, in order, from its construction to its destruction. Every
block was recorded while a board of [boards](../boards) was run ([recording.md](recording.md)), channel 1 of it with all messages
wanted, and a test holds this page against the run:

```sh
python3 tests/recording/timeline.py build/check/bin/radioctl build/check/lib/librecordingplatform.so boards >docs/timeline.md
```

Each life is the same: the module is made; observers are registered; the phases 11, 5 and 20; 25 degrees, **before** the first
carrier; a transmit and a receive carrier; phase 11 **once more**, and 26 degrees; the end. Numbered lines are writes to drivers. Not
shown is what comes with everything: `CZulTraceHandler_DmLevel2GtLevel` before each message and `endLogMsg` after it, the
`getInstance` of broker and module manager before each of their operations.

What to see there:

- The transmit handler goes first, in every phase. A lookup that fails where another name is tried next, or where the driver is one
  that the handler can do without, says so (`FAILED`) and goes on.
- **Phase 11 writes.** With an IF synthesiser, `if.frequency` is written: 0 at the first time, when no parameter of the plan has been
  read yet, and the real IF when the phase is run again. With an LO configuration, `rf.lo.config` is written with 1. When the IF
  synthesiser refuses, the phase fails, and nothing after it is looked up; what `rf.lo.config` answers is not looked at.
- **Phase 11 subscribes**, each time: after it was run again, the temperature service has the observer twice, with the same
  address. Whether it then notifies twice is the service's choice, and the corrections are written twice or once. (The stand-alone
  platform of these runs takes the same record for the same subscription.)
- The temperature is 0 until the first notification. Whether registering delivers the present one at once is the service's choice,
  too: a carrier that is set before it does is corrected for 0 degrees.
- A notification before the first carrier corrects for 0 kHz: the tables are asked for `(0, 25)`, and give what they have at their
  end.
- Phase 5 wants every variable of the plan but those that are optional; phase 20 reads what depends on the frame format again. A
  variable that is missing is named in a message, but for the three that the receiver of type 3 looks up by address (`HwCodeDsp`, and
  size and content of the offset array): there **phase 5 fails without a word**, at any threshold.
- What is kept by address, and read again and again: contents that were asked for with `variable-address` but for
  `ChannelSpacing`, records of drivers, handles of tables, and the observers.
"""

LIVES = [
    ("microwave-if", "Microwave board with IF synthesisers", "microwave-if-8ghz", "7777.35 MHz", "8088.67 MHz",
     "Handler type 0. The LO in kHz, the IF by a synthesiser, the charge pump by a table."),
    ("rf-module", "RF module", "rf-module-7ghz", "7442 MHz", "7603 MHz",
     "Handler type 1. The module makes its own plan of the carrier; there are no variables and no tables."),
    ("microwave-dsp-offset", "Microwave board with DSP offset", "microwave-dsp-offset-80ghz", "73 GHz", "83 GHz",
     "Handler type 2. In the receiver the DSP shifts by what the channel spacing asks for, and the LO is lower by as much."),
    ("microwave-hz-cs-offset", "Microwave board in Hz, with offset array", "microwave-hz-cs-offset-18ghz", "17975 MHz",
     "18985 MHz", "Handler type 3. The LO in Hz, in a buffer of 8 bytes; in the receiver the offset array tells the shift."),
    ("rau", "Remote radio unit", "rau-18ghz", "17727.5 MHz", "18737.5 MHz",
     "Handler type 4. The unit gets the carriers, and nothing else is asked for."),
    ("microwave-hz", "Microwave board in Hz, with IQ-imbalance compensation", "iq-compensation-18ghz", "18222.5 MHz",
     "19232.5 MHz", "Handler type 5, and beside its module a `CTxIQImbalanceHandler`, which registers itself for phase 11. The "
     "LO configuration of this board stands in the place of a charge pump."),
]

# What comes with everything, and what is the recorder's own.
LEFT_OUT = re.compile(r"^ +(trace-level|trace-end|broker-instance|module-manager-instance|driver-layer-record|temperature-record)\b")


def of_one_channel(board):
    """The board without its second channel."""
    text = board.read_text(encoding="utf-8")
    cut = re.sub(r"(?ms)^\[\[(?:channel|transmitter)\]\]\n(?:number|channel) = 2$.*?(?=^\[|^#)", "", text)
    if cut == text:
        sys.exit(f"{board}: there is no second channel")
    return cut


def lived(radioctl, recorder, boards, board, tx, rx):
    """What `record show` tells of a life of the first channel."""
    with tempfile.TemporaryDirectory() as folder:
        for file in pathlib.Path(boards).glob(board + ".*"):
            pathlib.Path(folder, file.name).write_bytes(file.read_bytes())
        pathlib.Path(folder, board + ".toml").write_text(of_one_channel(pathlib.Path(boards, board + ".toml")), encoding="utf-8")
        script = pathlib.Path(folder, "script")
        script.write_text(f"temperature 25\ntune tx 1 {tx} force\ntune rx 1 {rx} force\nphase init\ntemperature 26\n")
        recording = pathlib.Path(folder, "recording")
        subprocess.run([radioctl, "run", "--trace", "information", pathlib.Path(folder, board + ".toml"), script],
                       env={**os.environ, "LD_PRELOAD": os.path.abspath(recorder), "RADIO_RECORDING": str(recording)}, check=True,
                       stdout=subprocess.DEVNULL)
        return subprocess.run([radioctl, "record", "show", "--verbose", recording], check=True, text=True,
                              stdout=subprocess.PIPE).stdout


def shown(text):
    """Without times, places in sources, and what comes with everything."""
    lines = []
    for line in text.splitlines()[1:]:
        if LEFT_OUT.match(line) or line.startswith("  library ") or re.fullmatch(r"\d+ records.*", line):
            continue
        line = re.sub(r"  \(\d+\.\d+ s\)$", "", line)
        line = re.sub(r" \[\w+\.cpp:\d+\]$", "", line)
        if line:
            lines.append(line)
    return "\n".join(lines)


def main(radioctl, recorder, boards, page=None):
    parts = [HEAD]
    for name, title, board, tx, rx, words in LIVES:
        block = shown(lived(radioctl, recorder, boards, board, tx, rx))
        if "> phase 20, channel 1" not in block or "> destroy channel 1" not in block:
            sys.exit(f"{board}: the recording has no whole life in it:\n{block}")
        parts.append(f"## {title}: `{name}`\n\n{words}\n\n```\n{block}\n```\n")
    made = "\n".join(parts)
    if page is None:
        sys.stdout.write(made)
        return
    there = pathlib.Path(page).read_text(encoding="utf-8")
    difference = list(difflib.unified_diff(there.splitlines(), made.splitlines(), page, "the run", lineterm=""))
    if difference:
        sys.exit("\n".join(difference))


if __name__ == "__main__":
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    main(*sys.argv[1:])
