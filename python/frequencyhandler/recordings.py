"""Recordings: what passed between a library and its platform, read record by record, compared, lived again, and described."""

from __future__ import annotations

import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
from dataclasses import dataclass
from types import TracebackType
from typing import Any, Callable, Dict, Iterator, List, Optional, Tuple, Type

from . import _engine
from ._arguments import CHANNELS, INT64, PathLike, Whole, path, shown, text, whole, wrong
from ._tied import Tied
from .description import Description, describe
from .errors import ClosedError, RadioError, finish
from .progress import CancelLike, Progress, ProgressLike, Reporter, cancelling

__all__ = ["read", "diff", "describe", "replay", "Recording", "Header", "Object", "Record", "Losses", "Difference",
           "OperationDifference", "ObjectDifference", "Counts", "Description", "Replayed"]

#: A record of the first recording and what belongs to it in the second; None: there is nothing on that side.
Pair = Tuple[Optional["Record"], Optional["Record"]]


@dataclass(frozen=True)
class Header:
    """What the beginning of a recording says of it; None where nothing is known. ``started_ns`` is in nanoseconds since 1970,
    ``passed_over`` how many things were not recorded for want of room."""

    version: int
    word_bits: int
    process: int
    started_ns: int
    build_id: Optional[str]
    machine: Optional[str]
    library: Optional[str]
    unit: Optional[str]
    board: Optional[str]
    program: Optional[str]
    passed_over: int


@dataclass(frozen=True)
class Object:
    """Something that records speak of."""

    number: int
    kind: str
    name: str
    channel: Optional[int]


@dataclass(frozen=True)
class Record:
    """One record: ``kind`` is its word, "tune-tx" or "driver-write" for example; ``incoming`` what comes into the library.
    What ``numbers`` and ``data`` mean depends on the kind."""

    sequence: int
    kind: str
    incoming: bool
    thread: int
    depth: int
    object_kind: Optional[str]
    object: Optional[str]
    channel: Optional[int]
    outcome: str
    code: int
    numbers: Tuple[int, int, int, int]
    data: bytes


@dataclass(frozen=True)
class Losses:
    """What is not there any more: slots that newer ones took the place of, and those that nobody finished."""

    overwritten: int
    unfinished: int


class Recording(Tied):
    """A recording, which can be gone through as often as wanted, by several at a time: ``for record in recording``."""

    __slots__ = ("_file", "_engine")
    _instead = "the name of its file"

    def __init__(self, file: PathLike) -> None:
        name = path("file", file)
        self._file = name.decode("utf-8", "surrogateescape")
        self._engine: Optional[_engine.Recording] = _engine.Recording.read(name)

    def _open(self) -> _engine.Recording:
        if self._engine is None:
            raise ClosedError(f"the recording {self._file} is closed")
        return self._engine

    @property
    def header(self) -> Header:
        """What its beginning says of it."""
        return Header(**self._open().header())

    @property
    def objects(self) -> Tuple[Object, ...]:
        """What it speaks of."""
        return tuple(Object(*given) for given in self._open().objects())

    @property
    def losses(self) -> Losses:
        """What is not there any more, as far as it was gone through by whoever came farthest."""
        return Losses(*self._open().losses())

    def __iter__(self) -> Iterator[Record]:
        """Its records from the first, each time anew."""
        return self._records(self._open().cursor())

    def _records(self, cursor: _engine.Cursor) -> Iterator[Record]:
        while True:
            given = self._open().next(cursor)
            if given is None:
                return
            yield Record(*given)

    def close(self) -> None:
        """Lets go of its memory. The second time does nothing."""
        self._engine = None

    def __enter__(self) -> Recording:
        self._open()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __repr__(self) -> str:
        if self._engine is None:
            return f"<Recording {self._file!r}, closed>"
        return f"<Recording {self._file!r}: {len(self.objects)} objects>"


def read(file: PathLike) -> Recording:
    """Reads a recording. Raises :class:`InputError` with what no recorder writes."""
    return Recording(file)


@dataclass(frozen=True)
class Counts:
    """How many belong together and are the same, how many differ, and how many only one recording has."""

    same: int
    different: int
    only_before: int
    only_after: int

    @property
    def is_different(self) -> bool:
        """Something differs, or is there on one side alone."""
        return bool(self.different or self.only_before or self.only_after)


@dataclass(frozen=True)
class ObjectDifference:
    """Something that one radio has and the other has not: ``only_in`` is "before" or "after". ``asked_for_by_other`` says
    that the library looked for it there, too."""

    kind: str
    name: str
    only_in: str
    asked_for_by_other: bool


@dataclass(frozen=True)
class OperationDifference:
    """An operation that differs, or something that happened outside of any: what it begins with on both sides, the
    ``calls`` in it that differ, and the ``counts`` of all its calls."""

    before: Optional[Record]
    after: Optional[Record]
    calls: Tuple[Pair, ...]
    counts: Counts


@dataclass(frozen=True, eq=False)
class Difference:
    """What two recordings have otherwise. ``header`` has what their beginnings say, (before, after) by "library", "unit" and
    so on; ``operations`` the first that differ, and ``counts`` how many there are; ``losses`` what is not there any more in
    either. As a condition it is true when operations differ."""

    header: Dict[str, Tuple[str, str]]
    objects: Tuple[ObjectDifference, ...]
    operations: Tuple[OperationDifference, ...]
    counts: Counts
    losses: Tuple[Losses, Losses]

    def __bool__(self) -> bool:
        return self.counts.is_different

    def __repr__(self) -> str:
        counts = self.counts
        return (f"<Difference: {counts.same} operations the same, {counts.different} different, {counts.only_before} only "
                f"before, {counts.only_after} only after>")


def _record(given: Optional[Tuple[Any, ...]]) -> Optional[Record]:
    return None if given is None else Record(*given)


def _pair(given: Tuple[Any, Any]) -> Pair:
    return _record(given[0]), _record(given[1])


def diff(before: PathLike, after: PathLike, *, channel: Optional[Whole] = None, driver: str = "",
         limit: int = 1000) -> Difference:
    """Compares two recordings, all of them or what belongs to one channel or one driver. Operations are aligned by what is
    done with what; threads, times and numbers of objects do not count. At most ``limit`` operations are told, and so many
    calls of each; all are counted. Raises :class:`InputError` with what no recorder writes, and when nothing was compared:
    neither has an operation of that channel or driver. Ctrl-C ends it."""
    header, objects, operations, counts, losses = _engine.diff_recordings(
        path("before", before), path("after", after), None if channel is None else whole("channel", channel, CHANNELS),
        text("driver", driver), whole("limit", limit, (0, INT64[1])))
    return Difference(
        {what: (one, other) for what, one, other in header},
        tuple(ObjectDifference(kind, name, "before" if is_in_before else "after", asked)
              for kind, name, is_in_before, asked in objects),
        tuple(OperationDifference(*_pair(operation), tuple(map(_pair, calls)), Counts(*numbers))
              for operation, calls, numbers in operations),
        Counts(*counts), (Losses(*losses[0]), Losses(*losses[1])))


@dataclass(frozen=True, eq=False)
class Replayed:
    """What the library at hand did with one recording. ``outcome`` is "identical", "identical_until_gap", "different",
    "stopped" or "unusable", for the latter two with a ``reason``; ``calls`` were the same, of ``recorded_calls``.
    ``not_compared`` calls could not be compared, and ``passed_over`` things were not recorded for want of room.
    ``difference`` tells where it went another way ("recorded", "now", ...), or is None where it did not."""

    file: str
    outcome: str
    calls: int
    recorded_calls: int
    not_compared: int
    passed_over: int
    reason: Optional[str]
    difference: Optional[Dict[str, Any]]

    @property
    def is_same(self) -> bool:
        """The library did what it did then, as far as the recording goes."""
        return self.outcome in ("identical", "identical_until_gap")


_OF_REPLAYED = ("outcome", "calls", "recorded_calls", "not_compared", "passed_over")


def _replayed(file: str, event: Dict[str, Any]) -> Replayed:
    rest = {name: value for name, value in event.items()
            if name not in (*_OF_REPLAYED, "schema", "event", "file", "reason")}
    return Replayed(file=file, **{name: event[name] for name in _OF_REPLAYED}, reason=event.get("reason"),
                    difference=rest or None)


def _take(program: str, line: bytes, files: List[str], results: List[Replayed]) -> bool:
    """Takes a line of what ``program`` answers; whether it was a result."""
    try:
        event = json.loads(line)
        if event["event"] != "replayed_recording":
            return False
        results.append(_replayed(files[len(results)], event))
    except (ValueError, LookupError, TypeError) as error:
        raise RadioError(f"radioctl replay: an answer that is none, expected that of {shown(program)}") from error
    return True


def _results(process: subprocess.Popen[bytes], program: str, files: List[str], results: List[Replayed],
             reporter: Reporter, wants_end: Callable[[], bool]) -> bool:
    """Gathers what a process says; whether it came to its end."""
    assert process.stdout is not None
    rest = b""
    while not wants_end():
        if not select.select([process.stdout], [], [], _TURN)[0]:
            continue
        piece = os.read(process.stdout.fileno(), 65536)
        *lines, rest = (rest + piece).split(b"\n")
        for line in [*lines, rest] if not piece and rest else lines:
            if _take(program, line, files, results):
                reporter.tell(Progress(len(results), len(files), "recordings"))
        if not piece:
            return True
    return False


#: Seconds after which is asked again whether to go on.
_TURN = 0.05


def replay(*files: PathLike, radioctl: PathLike = "radioctl", progress: ProgressLike = None,
           cancel: CancelLike = None) -> Tuple[Replayed, ...]:
    """Has the library live recordings again, each in a process of its own, and says where it goes another way.

    The processes are those of the program ``radioctl``, which is looked for in PATH unless a path is given, and which is
    installed beside this package or apart from it; a wheel does not have it. A crash of the library is a result there, and
    not the end of this process. Raises :class:`ArgumentError` without files or ``radioctl``, :class:`RadioError` when that
    answers otherwise than it should. ``progress`` and ``cancel``: see :mod:`frequencyhandler.progress`; what was cancelled
    gives those that were done. Ctrl-C ends them, and raises :class:`Interrupted`, whose ``result`` has these.
    """
    names = [path("files", file) for file in files]
    if not names:
        raise wrong("files: none", "at least one recording")
    program = shutil.which(os.fsdecode(path("radioctl", radioctl)))
    if program is None:
        raise wrong(f"radioctl: {shown(radioctl)} was not found", "the program or its path")
    wants_end = cancelling(cancel) or (lambda: False)
    results: List[Replayed] = []
    with Reporter(progress, "recordings") as reporter, tempfile.TemporaryFile() as said, \
            subprocess.Popen([program, "replay", "--json", "--", *names], stdout=subprocess.PIPE, stderr=said) as process:
        try:
            if not _results(process, program, [name.decode("utf-8", "surrogateescape") for name in names], results,
                            reporter, wants_end):
                process.send_signal(signal.SIGINT)
                process.wait()
                return tuple(results)
        except KeyboardInterrupt as raised:
            process.send_signal(signal.SIGINT)
            process.wait()
            finish(tuple(results), raised, "the replay")
        except BaseException:
            process.kill()
            raise
        process.wait()
        said.seek(0)
        complaint = said.read().decode(errors="replace").strip()
    if len(results) != len(names):
        raise RadioError(f"radioctl replay: {complaint or 'no answer'}")
    return tuple(results)
