#!/usr/bin/env python3
"""cost.py VALGRIND RADIOCTL RECORDER BOARDS

What recording costs: instructions of frequency changes with and without the recorder, divided by the calls that it
recorded of them. Fails above the limit.
"""
import os
import re
import subprocess
import sys
import tempfile

LIMIT = 150
TUNES = {'microwave-hz-cs-offset-18ghz': ['tune tx 1 17975000'], 'rf-module-7ghz': ['tune tx 1 7442000']}
FEW, MANY = 20, 220


def main():
    valgrind, radioctl, recorder, boards = sys.argv[1:]
    directory = tempfile.TemporaryDirectory()
    recording = os.path.join(directory.name, 'recording')
    script = os.path.join(directory.name, 'script')

    def run(board, tune, count, preload, *before):
        with open(script, 'w', encoding='utf-8') as file:
            file.write(f'trace off\nrepeat {count} {tune}\n')
        environment = dict(os.environ, LD_PRELOAD=preload, RADIO_RECORDING=recording)
        return subprocess.run([*before, radioctl, 'run', '--trace', 'off', f'{boards}/{board}.toml', script],
                              env=environment, check=True, capture_output=True, text=True).stderr

    def instructions(board, tune, count, preload):
        told = run(board, tune, count, preload, valgrind, '--tool=callgrind', '--callgrind-out-file=/dev/null')
        return int(re.search(r'Collected : (\d+)', told)[1])

    def recorded(board, tune, count):
        """Calls and slots in a recording: the end of an operation is no call of its own."""
        run(board, tune, count, recorder)
        shown = subprocess.run([radioctl, 'record', 'show', '--json', recording], check=True, capture_output=True,
                               text=True).stdout
        with open(recording, 'rb') as file:
            claimed = int.from_bytes(file.read(56)[48:56], 'little')
        return shown.count('"event":"record",') - shown.count('"kind":"finished"'), claimed

    failed = False
    for board, tunes in TUNES.items():
        for tune in tunes:
            more = {with_it: instructions(board, tune, MANY, with_it) - instructions(board, tune, FEW, with_it)
                    for with_it in ('', recorder)}
            many, few = recorded(board, tune, MANY), recorded(board, tune, FEW)
            calls = many[0] - few[0]
            each = (more[recorder] - more['']) / calls
            size = 32 * (many[1] - few[1]) / calls
            print(f'{board}, {tune}: {calls / (MANY - FEW):g} calls, {each:.0f} instructions and {size:.0f} bytes each')
            failed |= each > LIMIT
    sys.exit(failed)


main()
