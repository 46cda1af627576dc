#!/usr/bin/env python3
"""cost.py VALGRIND RADIOCTL RECORDER BOARDS

What recording costs: instructions of frequency changes with and without the recorder, divided by the calls that it
recorded of them. Fails above the limits.
"""
import os
import re
import subprocess
import sys
import tempfile

LIMIT = 150
# With messages among the calls, whose texts are longer than any other record.
TRACED_LIMIT = 180
FEW, MANY = 20, 220

EIGHT = 'name = "Eight RF modules"\n' + ''.join(f'[[channel]]\nnumber = {n}\ntype = "rf-module"\n'
                                                  for n in range(1, 9)) + '[drivers]\n' + ''.join(
    f'"channel.{n}.{direction}.rf.frequency" = {{}}\n' for n in range(1, 9) for direction in ('tx', 'rx'))

# Board, or what is in it; the level of its trace; the frequency change; how much a call may cost.
CASES = [('rf-module-7ghz', 'off', 'tune tx 1 7442000', LIMIT),
         ('microwave-hz-cs-offset-18ghz', 'off', 'tune tx 1 17975000', LIMIT),
         (EIGHT, 'off', 'tune tx 1 7442000', LIMIT),
         (EIGHT, 'off', 'tune tx 8 7442000', LIMIT),
         ('rf-module-7ghz', 'information', 'tune tx 1 7442000', TRACED_LIMIT),
         ('microwave-hz-cs-offset-18ghz', 'information', 'tune tx 1 17975000', TRACED_LIMIT)]


class Measurement:
    def __init__(self, valgrind, radioctl, recorder, boards, directory):
        self.valgrind, self.radioctl, self.recorder, self.boards = valgrind, radioctl, recorder, boards
        self.directory = directory

    def path(self, name):
        return os.path.join(self.directory, name)

    def write(self, name, text):
        with open(self.path(name), 'w', encoding='utf-8') as file:
            file.write(text)
        return self.path(name)

    def run(self, case, count, preload, *before):
        board, trace, tune, _ = case
        toml = self.write('board.toml', board) if '\n' in board else f'{self.boards}/{board}.toml'
        script = self.write('script', f'trace {trace}\nrepeat {count} {tune}\n')
        environment = dict(os.environ, LD_PRELOAD=preload, RADIO_RECORDING=self.path('recording'))
        return subprocess.run([*before, self.radioctl, 'run', '--trace', 'off', toml, script], env=environment,
                              check=True, capture_output=True, text=True).stderr

    def instructions(self, case, count, preload):
        told = self.run(case, count, preload, self.valgrind, '--tool=callgrind', '--callgrind-out-file=/dev/null')
        return int(re.search(r'Collected : (\d+)', told)[1])

    def recorded(self, case, count):
        """Calls, messages and slots in a recording: the end of an operation is no call of its own."""
        self.run(case, count, self.recorder)
        recording = self.path('recording')
        shown = subprocess.run([self.radioctl, 'record', 'show', '--json', recording], check=True, capture_output=True,
                               text=True).stdout
        with open(recording, 'rb') as file:
            claimed = int.from_bytes(file.read(56)[48:56], 'little')
        calls = shown.count('"event":"record",') - shown.count('"kind":"finished"')
        return calls, shown.count('"kind":"trace-message"'), claimed

    def of(self, case):
        """Calls and messages of a frequency change; instructions and bytes of a call."""
        more = {with_it: self.instructions(case, MANY, with_it) - self.instructions(case, FEW, with_it)
                for with_it in ('', self.recorder)}
        calls, messages, slots = (many - few for many, few in
                                  zip(self.recorded(case, MANY), self.recorded(case, FEW)))
        return (calls / (MANY - FEW), messages / (MANY - FEW), (more[self.recorder] - more['']) / calls,
                32 * slots / calls)


def main():
    with tempfile.TemporaryDirectory() as directory:
        measurement = Measurement(*sys.argv[1:], directory)
        failed = False
        for case in CASES:
            calls, messages, each, size = measurement.of(case)
            board = 'eight channels' if '\n' in case[0] else case[0]
            print(f'{board}, {case[2]}, trace {case[1]}: {calls:g} calls, {messages:g} of them messages, '
                  f'{each:.0f} instructions and {size:.0f} bytes each')
            failed |= each > case[3]
    sys.exit(failed)


main()
