#!/usr/bin/env python3
"""Changes every constant, comparison, operator and message of the library, one at a time, and makes each of the mistakes in
mistakes.txt, and says whether the tests find it.

    find_mistakes.py [TEXT...]     those whose line contains one of the texts, as --list shows them; without a text, all
        --list                     only shows them
        --check                    only says whether the lists speak of lines that there are
        --by-recordings            looks for the mistakes of mistakes.txt by replaying the kept recordings, and nothing else
        --generated                with --by-recordings: for all the other changes as well
        --sample N                 N of them, picked evenly
        --continue                 takes over what the last run found out, if nothing has changed since it was broken off
        --again                    those that the last run did not find
        --workers N                so many at a time; as many as there are processors

changes.py says what is changed into what. A change is found when a program of PROGRAMS fails, which are tried from the
quickest on; the one test among them that reads the sources as text, and so sees everything, has no say. What is not found
has to stand in unseen.txt, with the reason why nobody can see it. What a compiler refuses is counted apart.

With --by-recordings a change is found when a recording of tests/recording/kept is not lived to its end identically, or the
library is not loaded. A mistake that is not found so has to stand in unrecorded.txt, with the reason: what comes into the
library by other ways, or leaves it without a trace, is in no recording. Of the other changes the share is told.

Needs what the tests need, and for all of them less than an hour on two processors. It builds in build/mistakes. Ends with 1
if what is not found is not explained or more than one in a hundred, or if a list explains what is found.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import resource
import signal
import subprocess
import sys
import threading
import time

import changes

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[2]
LIBRARY = pathlib.Path("PlatformServices/FrequencyHandler")
FOLDER = ROOT / "build/mistakes"
KEPT = pathlib.Path("tests/recording/kept")
ALWAYS_LEFT_OUT = {"build", ".git", ".cache", "__pycache__", "docs"}
# The quickest first. They run in the copy of the project.
PROGRAMS = {
    "replay_library": ["fuzz/corpus/library"],
    "library_tests": ["--gtest_brief=1", "--gtest_fail_fast", "--gtest_filter=-TraceCatalogue*"],
    "bare_platform_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "abi_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "out_of_memory_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "exhaustive_fault_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
}
REPLAYER = "radioctl-replay"
MEMORY = 4 << 30  # bytes; a mistake may have a program ask for more and more
NOT_FOUND, NOT_BUILT = "NOT FOUND", "cannot be built"


# What is changed

class Mistake:
    """One of mistakes.txt, which is made everywhere in its file."""

    def __init__(self, line):
        file, self.before, self.after = line.split(" | ")
        self.file = "private/" + file

    def name(self):
        return f"{self.file} | {self.before} -> {self.after}"

    def applied(self, source):
        return source.replace(self.before, self.after)


def lines_of(name):
    """Its lines that are neither empty nor comments."""
    return [line for line in (HERE / name).read_text().splitlines() if line.strip() and not line.startswith("#")]


def all_changes(sources):
    """The changes of all sources, then the mistakes: headers last, with which more is compiled."""
    enumerators = changes.enumerations(sources.values())
    for file in sorted(sources, key=lambda file: (file.endswith(".h"), file)):
        yield from changes.changes(file, sources[file], enumerators)
    yield from mistakes(sources)


def mistakes(sources):
    listed = list(map(Mistake, lines_of("mistakes.txt")))
    lost = [f"mistakes.txt: {mistake.file} has no \"{mistake.before}\""
            for mistake in listed if mistake.before not in sources[mistake.file]]
    if lost:
        sys.exit("\n".join(lost))
    return listed


def read_sources():
    files = [*(ROOT / LIBRARY / "private").rglob("*"), *(ROOT / LIBRARY / "interface").glob("*")]
    return {str(file.relative_to(ROOT / LIBRARY)): file.read_text() for file in files if file.suffix in (".cpp", ".h")}


def explained(name):
    """What the list explains: names, each reason behind those that it is about."""
    return collections.Counter(line.strip() for line in lines_of(name) if not line.startswith(" "))


# Where it is tried

def fingerprint(workshop):
    """Of everything that has a say in what is found."""
    state = hashlib.sha256()
    for path in workshop.project_files():
        if path.name not in ("unseen.txt", "unrecorded.txt"):
            state.update(f"{path}\n".encode() + (ROOT / path).read_bytes())
    return state.hexdigest()


def bounded():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


def ends_well(command, seconds, folder=None, expected=""):
    """Whether the program ends in time and gives 0, and first says what is expected. It, and what it starts, is a group of
    processes of its own."""
    with subprocess.Popen(command, cwd=folder, stdout=subprocess.PIPE if expected else subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=bounded) as program:
        try:
            said = program.communicate(timeout=seconds)[0]
            return program.returncode == 0 and (not expected or said.startswith(expected.encode()))
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(program.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass  # nobody is left of it


class Workshop:
    """A copy of the project, and a build of it, in which the tests look for mistakes."""

    NAME, EXPLANATIONS = "", "unseen.txt"
    LEFT_OUT = ALWAYS_LEFT_OUT | {"boards", "radio", "radioctl", "readers"}
    OPTIONS = ["-DFREQUENCYHANDLER_RADIOCTL=OFF"]

    def __init__(self, number):
        folder = FOLDER / f"{self.NAME}{number}"
        self.copy, self.build = folder / "copy", folder / "build"
        self.longest = {}

    def prepare(self):
        self.take_over_sources()
        subprocess.run(["cmake", "-S", self.copy, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                        "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w", "-DCMAKE_C_FLAGS_DEBUG=-O1 -w", "-DFREQUENCYHANDLER_WERROR=OFF",
                        *self.OPTIONS], check=True, stdout=subprocess.DEVNULL)
        for finder in self.finders():
            built = subprocess.run(self.building(self.target_of(finder)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   text=True)
            if built.returncode != 0:
                raise RuntimeError(built.stdout)
            begin = time.monotonic()
            if not self.passes(finder, 600):
                raise RuntimeError(f"without a mistake, {finder} should end well")
            self.longest[finder] = 10 + 10 * (time.monotonic() - begin)

    # What finds mistakes: test programs.

    def finders(self):
        return list(PROGRAMS)

    def target_of(self, finder):
        return finder

    def passes(self, program, seconds):
        return ends_well([self.build / "bin" / program, *PROGRAMS[program]], seconds, self.copy)

    @classmethod
    def project_files(cls):
        for folder, folders, files in os.walk(ROOT):
            folders[:] = sorted(set(folders) - cls.LEFT_OUT)
            for file in sorted(files):
                yield (pathlib.Path(folder) / file).relative_to(ROOT)

    def take_over_sources(self):
        wanted = set(self.project_files())
        for path in wanted:
            to, content = self.copy / path, (ROOT / path).read_bytes()
            if not to.exists() or to.read_bytes() != content:
                to.parent.mkdir(parents=True, exist_ok=True)
                to.write_bytes(content)
        for there in self.copy.rglob("*"):
            if there.is_file() and there.relative_to(self.copy) not in wanted:
                there.unlink()

    def building(self, target):
        return ["cmake", "--build", self.build, "--parallel", "1", "--target", target]

    def finder(self, change):
        """What finds the change, or why there is nothing."""
        source = self.copy / LIBRARY / change.file
        right = source.read_text()
        source.write_text(change.applied(right))
        try:
            if not ends_well(self.building("frequencyhandler_objects"), 600):
                return NOT_BUILT
            built = None
            for finder in self.finders():
                target = self.target_of(finder)
                # A test that no longer compiles has found it as well.
                if not ((target == built or ends_well(self.building(target), 600)) and
                        self.passes(finder, self.longest[finder])):
                    return finder
                built = target
            return NOT_FOUND
        finally:
            source.write_text(right)


class Archive(Workshop):
    """One in which the kept recordings do."""

    NAME, EXPLANATIONS = "recordings-", "unrecorded.txt"
    LEFT_OUT = ALWAYS_LEFT_OUT
    OPTIONS = []

    def finders(self):
        return sorted(file.name for file in (self.copy / KEPT).glob("*.rec"))

    def target_of(self, finder):
        return "radioctl_replay_program"

    def passes(self, recording, seconds):
        return ends_well([self.build / "bin" / REPLAYER, "--", self.copy / KEPT / recording], seconds,
                         expected="outcome identical\n")


class Workshops:
    def __init__(self, kind, count):
        self.free = queue.Queue()
        with concurrent.futures.ThreadPoolExecutor(count) as pool:
            for workshop in pool.map(lambda number: self.prepared(kind, number), range(count)):
                self.free.put(workshop)

    @staticmethod
    def prepared(kind, number):
        workshop = kind(number)
        workshop.prepare()
        return workshop

    def finder(self, change):
        workshop = self.free.get()
        try:
            return workshop.finder(change)
        finally:
            self.free.put(workshop)


# What is found out

class Results:
    """What was found out of each change, by its number, kept while it is found out."""

    def __init__(self, kind, mark=""):
        self.path = FOLDER / f"{kind.NAME}results.json"
        self.mark = mark
        self.finders = {}
        self.lock = threading.Lock()

    def last(self):
        if not self.path.exists():
            return None, {}
        lines = self.path.read_text().splitlines()
        return lines[0], {name: finder for name, finder in map(json.loads, lines[1:])}

    def begin(self):
        FOLDER.mkdir(parents=True, exist_ok=True)
        self.path.write_text(self.mark + "\n")

    def add(self, key, finder):
        with self.lock:
            self.finders[key] = finder
            with self.path.open("a") as file:
                file.write(json.dumps([key, finder]) + "\n")


def keyed(all_of_them):
    """Each change by its name; where several have one name, numbered."""
    seen = collections.Counter()
    found = {}
    for change in all_of_them:
        seen[change.name()] += 1
        found[f"{change.name()} #{seen[change.name()]}"] = change
    return found


def chosen(options, kind, everything):
    keys = [key for key in everything if not options.text or any(text in key for text in options.text)]
    if options.by_recordings and not options.generated:
        keys = [key for key in keys if isinstance(everything[key], Mistake)]
    if options.again:
        last = Results(kind).last()[1]
        keys = [key for key in keys if last.get(key) == NOT_FOUND]
    if options.sample and options.sample < len(keys):
        keys = [keys[index * len(keys) // options.sample] for index in range(options.sample)]
    return keys


def play(options, kind, everything, keys):
    results = Results(kind, fingerprint(kind))
    last_mark, last = results.last()
    results.begin()
    if options.resume and last_mark == results.mark:
        for key in keys:
            if key in last:
                results.add(key, last[key])
    waiting = [key for key in keys if key not in results.finders]
    workshops = Workshops(kind, options.workers)

    def try_one(key):
        finder = workshops.finder(everything[key])
        results.add(key, finder)
        print(f"{len(results.finders):5} {finder:22} {key.rpartition(' #')[0]}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(options.workers) as pool:
        tried = [pool.submit(try_one, key) for key in waiting]
        try:
            for one in tried:
                one.result()
        except BaseException:
            pool.shutdown(cancel_futures=True)
            raise
    return results.finders


def names_of(all_of_them):
    return collections.Counter(change.name() for change in all_of_them)


def check(everything):
    there = {"unseen.txt": names_of(everything.values()),
             "unrecorded.txt": names_of(change for change in everything.values() if isinstance(change, Mistake))}
    is_well = True
    for kind in (Workshop, Archive):
        for name in (explained(kind.EXPLANATIONS) - there[kind.EXPLANATIONS]).elements():
            print(f"explained in {kind.EXPLANATIONS}, and not there any more: {name}")
            is_well = False
    return is_well


def summary(kind, finders, everything, complete):
    """Says what was found out; gives whether it is well."""
    built = {key: finder for key, finder in finders.items() if finder != NOT_BUILT}
    missing = [key for key, finder in built.items() if finder == NOT_FOUND]
    # Of the changes beside the mistakes, recordings find what they find.
    asked = missing if kind is Workshop else [key for key in missing if isinstance(everything[key], Mistake)]
    names = names_of(everything[key] for key in asked)
    known = explained(kind.EXPLANATIONS)
    missed, justified = len(asked), sum((names & known).values())
    found = len(built) - len(missing)

    print()
    files = collections.defaultdict(collections.Counter)
    for key, finder in finders.items():
        group = "mistakes.txt" if isinstance(everything[key], Mistake) else everything[key].file
        files[group]["cannot be built" if finder == NOT_BUILT else "not found" if finder == NOT_FOUND else "found"] += 1
    print(f"{'':56} {'found':>8} {'not found':>10} {'cannot be built':>16}")
    for file, counts in files.items():
        print(f"{file:56} {counts['found']:8} {counts['not found']:10} {counts['cannot be built']:16}")
    print("found by " + ", ".join(f"{finder}: {count}" for finder, count in
                                  collections.Counter(built.values()).most_common() if finder != NOT_FOUND))
    for name in (names - known).elements():
        print(f"not found and not explained: {name}")
    # Of a part of the changes, nobody knows what else there is of one name.
    stale = list((known - names).elements()) if complete else []
    for name in stale:
        print(f"explained in {kind.EXPLANATIONS}, and found or not there any more: {name}")
    share = 100 * found / max(len(built), 1)
    print(f"{len(built)} changes: {found} found ({share:.2f} %), {len(missing)} not found, of which {justified} explained; "
          f"{len(finders) - len(built)} could not be built")
    return missed == justified and not stale and (kind is Archive or share >= 99 or not complete)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("text", nargs="*")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--by-recordings", action="store_true")
    parser.add_argument("--generated", action="store_true")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--continue", dest="resume", action="store_true")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    options = parser.parse_args()
    if options.generated and not options.by_recordings:
        parser.error("--generated goes with --by-recordings")

    kind = Archive if options.by_recordings else Workshop
    everything = keyed(all_changes(read_sources()))
    if options.check:
        return 0 if check(everything) else 1
    keys = chosen(options, kind, everything)
    if options.list:
        print(*(key.rpartition(" #")[0] for key in keys), sep="\n")
        return 0
    finders = play(options, kind, everything, keys)
    # Of recordings, that is all mistakes.
    complete = {key for key, change in everything.items() if kind is Workshop or isinstance(change, Mistake)} <= set(keys)
    return 0 if summary(kind, finders, everything, complete) else 1


if __name__ == "__main__":
    sys.exit(main())
