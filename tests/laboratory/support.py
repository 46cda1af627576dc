"""What the tests of the laboratory share: the program, a board that is soon calibrated, and a population."""
import json
import os
import subprocess

RADIOCTL = os.environ.get('RADIOCTL', 'radioctl')

BOARD = '''name = "Test radio"

[[channel]]
number = 1
type = "microwave-hz"

[[leakage]]
channel = 1
reference = 18000000
paths = [{ level = -26.0206, phase = 0.0, level_per_degree = 0.01, level_per_ghz = 2.0 }]
i = { driver = "channel.1.tx.rf.mixer.i", gain = 1.0e-4, range = [-1000, 1000] }
q = { driver = "channel.1.tx.rf.mixer.q", gain = 1.0e-4, range = [-1000, 1000] }
detector = { driver = "channel.1.tx.rf.detector.v", slope = 25.0, zero = -95.0, floor = -85.0, range = [0, 4095] }

[[calibration]]
channel = 1
band = [17900000, 18100000]
step = 100000
method = "search"
temperatures = [-10, 50]

[drivers]
"channel.1.tx.rf.lo.frequency" = {}
"channel.1.tx.rf.lo.frequency.in.hz" = {}
"channel.1.tx.rf.lo.config" = {}
"channel.1.rx.rf.lo.frequency" = {}
"channel.1.rx.rf.lo.frequency.in.hz" = {}
"channel.1.rx.rf.lo.config" = {}
"channel.1.tx.rf.mixer.i" = {}
"channel.1.tx.rf.mixer.q" = {}
"channel.1.tx.rf.detector.v" = {}

[variables]
"TxIfBb" = 0
"RxIfBb" = 0
"channel.1.tx.mixer.multiplicationfactor" = 2
"channel.1.tx.rf.spectruminverted" = 0
"channel.1.tx.baseband.spectruminverted" = 0
"channel.1.rx.mixer.multiplicationfactor" = 2
"channel.1.rx.rf.spectruminverted" = 0
"channel.1.rx.baseband.spectruminverted" = 0
'''

LABORATORY = '''board = "board.toml"
channel = 1
count = {count}
seed = {seed}
failures = 0.5

[limits]
leakage = -50

[population]
paths = [{{ level = {{ normal = [-26, 1] }}, phase = {{ uniform = [-180, 180] }} }}]
skew = {{ normal = [0, 2] }}

[population.detector]
noise = {{ uniform = [0, 2] }}

[[settings]]
name = "coarse"
min_delta = 60
qualify = false

[[settings]]
name = "fine & slow"
min_delta = 3
qualify = false
'''


def radioctl(folder, *arguments, **more):
    """Runs the program to its end in `folder`."""
    return subprocess.run([RADIOCTL, *map(str, arguments)], cwd=folder, text=True, capture_output=True, check=False,
                          timeout=300, **more)


def events(ran):
    return [json.loads(line) for line in ran.stdout.splitlines()]


def write_laboratory(folder, count=12, seed=1, name='lab.toml'):
    (folder / 'board.toml').write_text(BOARD)
    (folder / name).write_text(LABORATORY.format(count=count, seed=seed))
    return folder


def trials_of(text):
    return [json.loads(line) for line in text.splitlines()[1:]]
