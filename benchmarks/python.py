"""What Python costs beside the program: the audit of a raster, and a tune.

    python3 benchmarks/python.py VALGRIND RADIOCTL PACKAGE [CARRIERS]
    python3 benchmarks/python.py --tune VALGRIND PACKAGE BOARDS

Both count instructions, which are the same on a busy computer. The first has those of `radioctl plan audit` and those of
plan.audit() with its array, less those of an interpreter that imports the package and leaves; it fails above 1.2 times. The
second has where those of a tune go, as ratios.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

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


def instructions(valgrind, command, environment, *options):
    """How many a command takes, as callgrind counts them."""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([valgrind, "--tool=callgrind", f"--callgrind-out-file={folder}/out", *options, *command],
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


def do_tunes(way, count, boards):
    """So many tunes, in one of the ways; they are counted, and nothing before them, which is a hundred times as much."""
    from frequencyhandler import Radio

    def do(count):
        if way == "session":
            engine.execute(["sweep", "tx", "1", "7000000", str(7000000 + count - 1), "1"])
        elif way == "module":
            for i in range(count):
                engine.tune("tx", 1, 7000000 + i, False)
        else:
            for i in range(count):
                radio.tune("tx", 1, 7000000 + i)

    with Radio(os.path.join(boards, "rf-module-7ghz.toml")) as radio:
        engine = radio._engine
        do(100)
        subprocess.run(["callgrind_control", "-i", "on", str(os.getpid())], check=True, stdout=subprocess.DEVNULL)
        do(count)
        os._exit(0)


def tune(valgrind, package, boards):
    """Where a tune's instructions go: in the session of C++, which gathers its events, with the module, and with the package."""
    environment = dict(os.environ, PYTHONPATH=package, PYTHONDONTWRITEBYTECODE="1", PYTHONHASHSEED="0")
    few, many = 200, 2200

    def counted(way, count):
        command = [sys.executable, __file__, "--do-tunes", way, str(count), boards]
        return instructions(valgrind, command, environment, "--instr-atstart=no")

    each = {}
    with concurrent.futures.ThreadPoolExecutor() as pool:
        ways = {way: [pool.submit(counted, way, count) for count in (few, many)] for way in ("session", "module", "package")}
        for way, (least, most) in ways.items():
            each[way] = (most.result() - least.result()) / (many - few)
    for way, what in (("session", "the session in C++, a sweep, its events gathered"),
                      ("module", "the module, its report as a tuple"), ("package", "the package, an Outcome")):
        print(f"{what}: {each[way]:.0f} instructions for a tune, {each[way] / each['session']:.2f} times")


if __name__ == "__main__":
    if sys.argv[1] == "--tune":
        tune(*sys.argv[2:5])
    elif sys.argv[1] == "--do-tunes":
        do_tunes(sys.argv[2], int(sys.argv[3]), sys.argv[4])
    else:
        sys.exit(audit(*sys.argv[1:4], int(sys.argv[4]) if len(sys.argv) > 4 else 100000))
