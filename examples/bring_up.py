#!/usr/bin/env python3
"""Brings a board up: looks through its description, boots it, tunes every channel and says what reached its hardware.

    python3 examples/bring_up.py boards/rf-module-7ghz.toml
    python3 examples/bring_up.py --hardware boards/of-my-bench.toml
"""

import argparse
import sys

from frequencyhandler import Board, CommandFailed, Error, Radio


def first_carriers(board, channel):
    """A transmit and a receive carrier of a channel, in kHz: the first of its raster, or what people begin with."""
    carriers = {"tx": 7442000, "rx": 7281000}
    for raster in board.rasters:
        if channel.number in raster.channels:
            carriers.update({direction: first for direction, first, _, _ in reversed(raster.rows)})
    return carriers


def bring_up(board, hardware):
    """True when every carrier reached its hardware."""
    good = True
    with Radio(board, hardware=hardware) as radio:
        for phase in radio.phases:
            print(f"phase {phase.number}, {phase.meaning}: {len(phase.steps)} modules")
        if not hardware:
            radio.temperature = 25
        for channel in board.channels:
            for direction, carrier in first_carriers(board, channel).items():
                try:
                    outcome = radio.tune(direction, channel.number, carrier)
                except CommandFailed as error:
                    print(f"  {error}")
                    good = False
                    continue
                print(f"{direction} {channel.number}, {carrier} kHz")
                for driver, value in outcome:
                    print(f"  {driver} = {value}")
                for refused in outcome.failed_writes:
                    print(f"  {refused.driver}: refused {refused.value}, 0x{refused.code:04x}")
                good = good and not outcome.failed_writes
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("board", help="board description (TOML)")
    parser.add_argument("--hardware", action="store_true", help="drive the real devices of the board")
    options = parser.parse_args()
    try:
        board = Board.load(options.board)
        for finding in board.check():
            print(finding)
        return 0 if bring_up(board, options.hardware) else 1
    except Error as error:
        print(f"bring_up: {error}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
