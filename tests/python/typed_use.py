"""What programs with types of their own write: looked at by mypy, and not run."""

import pickle
from typing import Any, List, Optional, Tuple, Union, assert_type

import numpy as np
import numpy.typing as npt

from frequencyhandler import Board, InputError, Interrupted, Progress, Radio, calibrate, events, plan, qualify, recordings, thermal


def drive(file: str) -> Optional[int]:
    with Radio(file) as radio:
        for told in radio.events(events.Notified):
            assert_type(told.carrier_khz, int)
        assert_type(radio.events(events.Write).wait(1.0), events.Write)
        assert_type(next(radio.events()), events.Event)
        assert_type(next(radio.events(events.Write, events.Trace)), Union[events.Write, events.Trace])
        radio.on_event(lambda either: print(either.driver if isinstance(either, events.Write) else either.text), events.Write,
                       events.Trace)
        radio.on_event(lambda failed: print(failed.code), events.FailedWrite)
        radio.on_event(print)
        outcome = radio.tune("tx", 1, "7.442 GHz")
        assert_type(outcome.writes, Tuple[events.Write, ...])
        assert_type(radio.drivers["x"].read(), int)
        radio.variables["x"] = [1, 2]
        radio.variables.set("x", np.arange(2))
        radio.tune("rx", np.int32(1), np.uint32(7603000))
        radio.drivers["x"].write(np.int16(-1))
        radio.expect.frequency("rx", np.int64(1), np.uint32(7603000))
        radio.temperature = 25
        return radio.temperature


def look(file: str) -> List[Board]:
    board = pickle.loads(pickle.dumps(Board.load(file)))
    assert isinstance(board, Board)
    board.tables["x"] = np.arange(3), None, [1, 2, 3]
    assert_type(board.tables["x"].values, npt.NDArray[np.int32])
    return [board, board.copy()]


def work(board: Board) -> Optional[plan.AuditResult]:
    def tell(progress: Progress) -> None:
        print(progress.done, progress.total, progress.unit)

    try:
        result = plan.audit(board, progress=tell, cancel=lambda: False)
        qualify(board, 1, progress=True)
        calibrate(board, 1, temperatures=[25], band=("17.7 GHz", 18000000), on_point=lambda point: print(point.state))
        thermal.replay(board, (np.arange(3), [20, 21, 22]), carriers={1: "17.7275 GHz"}, progress=tell)
        calibrate(board, np.uint8(1), temperatures=np.arange(20, 40, 5), probes=np.int64(100), i_range=(np.int8(-5), 5))
        recordings.replay("a.rec", progress=tell)
    except InputError as error:
        assert_type(error.expected, Optional[str])
        return None
    except Interrupted as interrupted:
        assert_type(interrupted.result, Any)
        return None
    return result
