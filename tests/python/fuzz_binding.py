"""Calls everything in the package with arguments at random, for so long: whatever comes back is a value or an exception of a
kind that it may be, and the interpreter is still there. Meant for the sanitized build.

    python3 tests/python/fuzz_binding.py [SECONDS] [SEED]
"""

import inspect
import os
import random
import shutil
import sys
import tempfile
import threading
import time

import numpy as np

import frequencyhandler as fh
from frequencyhandler import _engine, events, plan, recordings, tables, thermal

#: What anybody may be told; anything else is a fault of the package.
ALLOWED = (fh.Error, KeyError, ZeroDivisionError, TypeError, MemoryError, OverflowError, UnicodeError)
#: Beside these the engine itself, which nobody calls, may say what pybind11 and the standard library do.
ALLOWED_OF_THE_ENGINE = ALLOWED + (ValueError, RuntimeError, IndexError, AttributeError)

WORDS = ["tx", "rx", "", "7.442 GHz", "7442000", "channel.1.tx.rf.frequency", "driver-write", "driver-read", "init", "11",
         "fit", "search", "low", "fresh", "restart", "resume", "notice", "error", "tune", "expect", "writes", "show", "drivers",
         "repeat", "3", "force", "\0", "\ud800", "a" * 10000, "\n", "%s%n", "../..", "/", "all", "write", "read", "phase",
         "temperature", "observe", "interface", "IDriverLayer", "absent", "present", "set", "wait", "sweep", "quit"]
NUMBERS = [0, 1, 2, 3, -1, 9, 20, 25, 60, 100, 7442000, 17727500, 2**31 - 1, 2**31, -(2**31), 2**32, 2**63, -(2**63), 2**64,
           10**30, 0.5, -0.0, float("nan"), float("inf"), 1e300, True, False]

#: What arguments of these names may well be.
PLAUSIBLE = {
    "direction": ["tx", "rx"], "channel": [1, 2], "carrier": [7442000, "17.7275 GHz", 0, 2**32 - 1],
    "first": [7442000, 18000000], "last": [7443000, 17990000], "step": [1000, "1 MHz"], "seconds": [0, 0.5, 3600],
    "operation": ["driver-write", "driver-read", "table-bilinear", "variable-get", "broker-get", ""], "object": [""],
    "code": [0x8000, 0x8001, 0, 1], "name": ["init", "frame-format", 5, "channel.1.tx.rf.frequency"], "values": [1, [1, 2]],
    "value": [0, 1, -1, 2**31 - 1], "command": ["tune tx 1 7442000", "show drivers", "repeat 3 tune tx 1 7442000", "quit",
                                                "temperature 20", "show leakage", "observe rx 2", "fault broker-get 0x8000"],
    "result": ["ok", "failed", 0], "writes": [0, 1, [("channel.1.tx.rf.frequency", 7442000)]], "temperature": [25, -33],
    "callback": [repr, lambda happened: None, lambda happened: 1 / 0], "log": [([0, 5], [20, 21])],
    "board": ["lo-leakage-18ghz.toml", "iq-compensation-18ghz.toml", "rf-module-7ghz.toml"],
    "file": ["lo-leakage-18ghz.toml", "logs/day-cycle.csv"], "tables": ["lo-leakage-18ghz.channel-1.csv"],
    "recording": ["radio.rec", "other.rec"], "script": ["s", "b"], "driver": ["", "channel.1.tx.rf.frequency"],
    "before": ["lo-leakage-18ghz.toml", "radio.rec"], "after": ["lo-leakage-18ghz.channel-1.csv", "lo-leakage-18ghz.toml", "other.rec"],
}


class Hostile:
    """Does not do what it says."""

    def __index__(self):
        return random.choice([1, "x"])  # what is no number, Python refuses by itself

    def __fspath__(self):
        return random.choice(["x", 7])

    def __iter__(self):
        return iter([1, self])

    def __len__(self):
        return -1

    def __repr__(self):
        raise RuntimeError("no words")


class Fuzzer:
    """One folder of boards, one sequence of random numbers."""

    def __init__(self, folder, seed):
        self.folder = folder
        self.random = random.Random(seed)
        self.boards = sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".toml"))
        self.radio = None
        self.calls = 0
        self.kinds = {}

    def array(self):
        shape = self.random.choice([(), (0,), (1,), (3,), (2, 3), (0, 4), (2, 2, 2)])
        kind = self.random.choice([np.int8, np.int32, np.int64, np.uint64, np.float64, np.bool_, "U3", object])
        made = np.zeros(shape, dtype=kind)
        if kind in (np.int32, np.int64, np.float64) and made.size:
            made += np.arange(made.size).reshape(shape).astype(kind)
        return made[::-1] if made.ndim and self.random.random() < 0.2 else made

    def value(self, depth=0):
        choice = self.random.randrange(14 if depth < 2 else 8)
        if choice == 0:
            return self.random.choice(self.boards)
        if choice < 3:
            return self.random.choice(WORDS)
        if choice < 6:
            return self.random.choice(NUMBERS)
        if choice == 6:
            return self.random.choice([None, b"", b"tx", b"\xff", object(), Hostile(), print, threading.Event(), lambda *_: 1])
        if choice == 7:
            return self.random.choice([events.Write, fh.Board, int])
        if choice == 8:
            return self.array()
        if choice == 9:
            return fh.Board.load(self.random.choice(self.boards))
        if choice == 10:
            return {self.value(2): self.value(2)} if self.random.random() < 0.5 else {1: 17727500}
        items = [self.value(depth + 1) for _ in range(self.random.randrange(4))]
        return self.random.choice([list, tuple])(items)

    def arguments(self, made):
        """As many as it takes, most often, and about half of them of the kind that it takes."""
        try:
            names = [name for name, one in inspect.signature(made).parameters.items()
                     if one.kind in (one.POSITIONAL_ONLY, one.POSITIONAL_OR_KEYWORD)]
        except (TypeError, ValueError):
            names = [None] * self.random.randrange(6)
        if self.random.random() < 0.1:
            names = names[:-1] if self.random.random() < 0.5 else names + [None]
        return [self.random.choice(PLAUSIBLE[name]) if name in PLAUSIBLE and self.random.random() < 0.7 else self.value()
                for name in names]

    def keywords(self, made, names):
        try:
            names = [name for name, one in inspect.signature(made).parameters.items() if one.kind == one.KEYWORD_ONLY] or (
                names if made == self.calibrate else [])
        except (TypeError, ValueError):
            pass
        return {name: self.value() for name in names if self.random.random() < 0.15}

    def open_radio(self):
        if self.radio is None or self.radio.is_closed or self.random.random() < 0.02:
            if self.radio is not None:
                self.radio.close()
            self.radio = fh.Radio(self.random.choice(self.boards), must_boot=False, calls=self.random.random() < 0.3)
        return self.radio

    def target(self):
        """Something to call, and the names of arguments that it has."""
        if self.random.random() < 0.6:
            radio = self.open_radio()
            owner = self.random.choice([radio, radio, radio, radio.faults, radio.expect, radio.variables, radio.drivers])
            if owner is radio and self.random.random() < 0.3 and radio.drivers:
                owner = radio.drivers[self.random.choice(list(radio.drivers))]
            names = [name for name in dir(type(owner)) if not name.startswith("_") and name not in ("index", "count")]
            return getattr(owner, self.random.choice(names)), ["force", "check", "times", "below", "code", "dwell"]
        if self.radio is not None:
            self.radio.close()
        board = fh.Board.load(self.random.choice(self.boards))
        return self.random.choice([
            (plan.explain, []), (tables.lint, []), (tables.diff, ["model", "channel"]), (tables.why, []),
            (thermal.replay, ["carriers", "keep", "cancel"]), (thermal.read_log, []), (recordings.read, []),
            (recordings.diff, ["channel", "driver", "limit"]), (recordings.describe, []), (self.save, []),
            (fh.qualify, ["settle_time", "detector", "cancel"]), (fh.Board.load, []), (fh.Radio, ["trace", "calls"]),
            (board.tables.__setitem__, []), (board.tables.__getitem__, []), (board.copy, []), (board.check, []),
            (self.calibrate, ["method", "probes", "band", "step", "temperatures", "i_range", "q_range", "shrink", "min_delta",
                              "max_iterations", "settle_time", "detector", "serial", "station", "qualify", "accept_edge"]),
        ])

    def calibrate(self, *rest, **keywords):
        """Into a folder of its own, and soon over."""
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            return fh.calibrate(*(rest or (os.path.join(self.folder, "lo-leakage-18ghz.toml"), 1)),
                                journal=os.path.join(folder, "j"), tables=os.path.join(folder, "t"), cancel=lambda: True,
                                **keywords)

    def save(self, recording, script):
        """Into a folder of its own; whatever a script is called, there."""
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            return recordings.describe(recording).save(os.path.join(folder, "b"),
                                                       os.path.join(folder, os.path.basename(script)))

    def engine_target(self):
        """Something of the module itself, past all that the package looks at."""
        if self.random.random() < 0.4:
            radio = self.open_radio()._engine
            return getattr(radio, self.random.choice([name for name in dir(radio) if not name.startswith("_")]))
        if self.radio is not None:
            self.radio.close()
        names = [name for name in dir(_engine) if not name.startswith("_")
                 and name not in ("calibrate", "audit", "qualify", "save_description", "version")]
        made = getattr(_engine, self.random.choice(names))
        if made is _engine.Board:
            board = _engine.Board.load(self.random.choice(self.boards))
            return getattr(board, self.random.choice([name for name in dir(board) if not name.startswith("_")]))
        return made

    def step(self):
        """One call."""
        allowed = ALLOWED
        try:
            if self.random.random() < 0.25:
                allowed = ALLOWED_OF_THE_ENGINE
                made, keywords = self.engine_target(), {}
            else:
                made, names = self.target()
                keywords = self.keywords(made, names) if callable(made) else {}
            if callable(made):
                made = made(*self.arguments(made), **keywords)
            if self.random.random() < 0.1:
                repr(made)
            if isinstance(made, fh.Radio):
                made.close()
            self.count("a value")
        except allowed as error:
            self.count(type(error).__name__)
        except RuntimeError as error:  # of a hostile value
            if str(error) != "no words":
                raise
        except ValueError as error:
            if "__len__() should return >= 0" not in str(error):
                raise

    def count(self, kind):
        self.calls += 1
        self.kinds[kind] = self.kinds.get(kind, 0) + 1


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 600
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else random.randrange(2**32)
    print(f"seed {seed}, {seconds:g} s", flush=True)
    random.seed(seed)
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(os.environ["RADIO_BOARDS"], folder, dirs_exist_ok=True)
        kept = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "recording", "kept")
        shutil.copy(os.path.join(kept, "rf-module-7ghz.rec"), os.path.join(folder, "radio.rec"))
        shutil.copy(os.path.join(kept, "life-numbers.rec"), os.path.join(folder, "other.rec"))
        os.chdir(folder)
        fuzzer = Fuzzer(folder, seed)
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            fuzzer.step()
        if fuzzer.radio is not None:
            fuzzer.radio.close()
        os.chdir("/")
    print(f"{fuzzer.calls} calls: " + ", ".join(f"{count} {kind}" for kind, count in sorted(fuzzer.kinds.items())))


if __name__ == "__main__":
    main()
