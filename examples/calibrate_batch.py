#!/usr/bin/env python3
"""Calibrates a batch of units, several at a time, and draws what leaked before and after.

    python3 examples/calibrate_batch.py --out results units/*.toml

Each unit is a board description. A process has one radio, so each unit has a process. Every probe is in a journal: after
Ctrl-C, or a power cut, the same command goes on where it was.
"""

import argparse
import concurrent.futures
import os
import pathlib
import signal
import sys

from frequencyhandler import Board, ChoiceError, Error, calibrate


class Worker:
    """A process that calibrates one unit after the other, until Ctrl-C: then not the next one either, which it has already."""

    is_busy = False
    is_over = False

    @classmethod
    def begin(cls):
        signal.signal(signal.SIGINT, cls.end)

    @classmethod
    def end(cls, *_):
        cls.is_over = True
        if cls.is_busy:
            raise KeyboardInterrupt


def calibrate_unit(file, channel, folder):
    """The result of one unit, in a worker."""
    if Worker.is_over:
        raise KeyboardInterrupt
    Worker.is_busy = True
    try:
        return calibrate_or_resume(file, channel, folder)
    finally:
        Worker.is_busy = False


def calibrate_or_resume(file, channel, folder):
    """The result of one unit: resumed where a journal is, begun where none is."""
    unit = pathlib.Path(file).stem
    files = {"journal": folder / f"{unit}.journal", "tables": folder / f"{unit}.csv"}
    board = Board.load(file)
    try:
        return unit, calibrate(board, channel, **files)
    except ChoiceError:  # a journal is there that was not finished
        return unit, calibrate(board, channel, beginning="resume", **files)


def draw(results, place):
    """Leakage of each unit at its points, without corrections and with them."""
    from matplotlib import pyplot  # only who draws waits for it

    figure, axes = pyplot.subplots(figsize=(9, 5), layout="constrained")
    for unit, result in sorted(results.items()):
        points = result.array
        carriers = points["carrier_khz"] / 1e6
        line, = axes.plot(carriers, points["after_dbc"], "o", label=f"{unit}: {result.verdict.kind or 'no verdict'}")
        axes.plot(carriers, points["before_dbc"], "x", color=line.get_color(), alpha=0.5)
    axes.set(xlabel="carrier / GHz", ylabel="LO leakage / dBc", title="x without corrections, o with those found")
    axes.grid(True, alpha=0.3)
    axes.legend()
    figure.savefig(place)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("boards", nargs="+", help="board descriptions (TOML), one for each unit")
    parser.add_argument("--channel", type=int, default=1)
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("."), help="folder for journals, tables, batch.png")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()
    files = {}
    for file in options.boards:
        other = files.setdefault(pathlib.Path(file).stem, file)
        if other is not file:
            parser.error(f"{other} and {file} would have the same journal and tables, expected names that differ")
    options.out.mkdir(parents=True, exist_ok=True)
    results = {}
    code = 0
    pool = concurrent.futures.ProcessPoolExecutor(options.jobs, initializer=Worker.begin)
    waiting = [pool.submit(calibrate_unit, file, options.channel, options.out) for file in options.boards]
    try:
        for done in concurrent.futures.as_completed(waiting):
            try:
                unit, result = done.result()
            except Error as error:
                print(f"calibrate_batch: {error}", file=sys.stderr)
                code = 1
                continue
            results[unit] = result
            code = code if result.is_good else 1
            print(f"{unit}: {result.verdict}")
    except KeyboardInterrupt:
        print("calibrate_batch: interrupted; the same command goes on", file=sys.stderr)
        code = 128 + signal.SIGINT
    finally:
        pool.shutdown(cancel_futures=True)
    if results:
        draw(results, options.out / "batch.png")
        print(f"drawn: {options.out / 'batch.png'}")
    return code


if __name__ == "__main__":
    sys.exit(main())
