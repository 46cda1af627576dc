"""What Python costs beside the program: the audit of a raster, and a tune.

    python3 benchmarks/python.py VALGRIND RADIOCTL PACKAGE [CARRIERS]
    python3 benchmarks/python.py --tune PACKAGE BOARDS

The first counts instructions, which are the same on a busy computer: those of `radioctl plan audit` and those of
plan.audit() with its array, less those of an interpreter that imports the package and leaves. It fails above 1.2 times. The
second measures where the time of a tune goes, one part after the other in one process, as ratios.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

MOST = 1.2

BOARD = """name = "as many carriers as are wanted"
[[channel]]
number = 1
type = "rf-module"
[drivers]
"channel.1.tx.rf.frequency" = {{}}
"channel.1.rx.rf.frequency" = {{}}
[[raster]]
name = "every kHz"
direction = "tx"
first = 7000000
last = {last}
step = 1
"""


def instructions(valgrind, command, environment):
    """How many a command takes, as callgrind counts them."""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([valgrind, "--tool=callgrind", f"--callgrind-out-file={folder}/out", *command],
                              capture_output=True, text=True, env=environment)
    if done.returncode != 0:
        sys.exit(done.stderr)
    return int(re.search(r"Collected : (\d+)", done.stderr).group(1))


def audit(valgrind, radioctl, package, carriers):
    """Holds one against the other; gives the exit code."""
    environment = dict(os.environ, PYTHONPATH=package, PYTHONDONTWRITEBYTECODE="1", PYTHONHASHSEED="0")
    with tempfile.TemporaryDirectory() as folder:
        def board(count):
            file = pathlib.Path(folder) / f"{count}.toml"
            file.write_text(BOARD.format(last=7000000 + count - 1))
            return str(file)

        python = "import sys; from frequencyhandler import plan; " \
                 "assert plan.audit(sys.argv[1]).carriers.size == int(sys.argv[2])"
        counted = {}
        for count in (2, carriers):
            counted["program", count] = instructions(valgrind, [radioctl, "plan", "audit", board(count)], environment)
            counted["python", count] = instructions(
                valgrind, [sys.executable, "-c", python, board(count), str(count)], environment)
    each = {who: (counted[who, carriers] - counted[who, 2]) / (carriers - 2) for who in ("program", "python")}
    ratio = each["python"] / each["program"]
    print(f"{carriers} carriers: {each['program']:.1f} instructions for each in the program, {each['python']:.1f} in Python, "
          f"{ratio:.3f} times (at most {MOST})")
    return 0 if ratio <= MOST else 1


def best(work, turns=7, count=20000):
    """Seconds for one of `count`, the best of some turns."""
    times = []
    for _ in range(turns):
        begun = time.perf_counter()
        work(count)
        times.append(time.perf_counter() - begun)
    return min(times) / count


def tune(boards):
    """Where a tune's time goes: through the package, through the module alone, and inside it by the language."""
    from frequencyhandler import Radio

    with Radio(os.path.join(boards, "rf-module-7ghz.toml")) as radio:
        engine = radio._engine

        def package(count):
            for i in range(count):
                radio.tune("tx", 1, 7442000 + (i & 1))

        def module(count):
            for i in range(count):
                engine.tune("tx", 1, 7442000 + (i & 1), False)

        def sweep(count):
            engine.execute(["sweep", "tx", "1", "7442000", str(7442000 + count - 1), "1"])

        def nothing(count):
            for i in range(count):
                engine.is_closed

        inside = best(sweep)
        for name, work in (("the session in C++, a sweep, its events gathered", sweep), ("the module, events as tuples", module),
                           ("the package, an Outcome", package), ("a property of the module, for scale", nothing)):
            took = best(work)
            print(f"{name}: {took * 1e6:.2f} us, {took / inside:.2f} times")


if __name__ == "__main__":
    if sys.argv[1] == "--tune":
        sys.path.insert(0, sys.argv[2])
        tune(sys.argv[3])
    else:
        sys.exit(audit(*sys.argv[1:4], int(sys.argv[4]) if len(sys.argv) > 4 else 100000))
