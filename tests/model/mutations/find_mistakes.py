#!/usr/bin/env python3
"""Changes every constant, comparison, operator and message of the library, one at a time, and makes each of the mistakes in
mistakes.txt, and says whether the tests find it.

    find_mistakes.py [TEXT...]     those whose line contains one of the texts, as --list shows them; without a text, all
        --list                     only shows them
        --check                    only says whether mistakes.txt and unseen.txt speak of lines that there are
        --sample N                 N of them, picked evenly
        --continue                 takes over what the last run found out, if nothing has changed since it was broken off
        --again                    those that the last run did not find
        --workers N                so many at a time; as many as there are processors

changes.py says what is changed into what. A change is found when a program of PROGRAMS fails, which are tried from the
quickest on; the one test among them that reads the sources as text, and so sees everything, has no say. What is not found
has to stand in unseen.txt, with the reason why nobody can see it. What a compiler refuses is counted apart.

Needs what the tests need, and for all of them less than an hour on two processors. It builds in build/mistakes. Ends with 1
if what is not found is not explained or more than one in a hundred, or if unseen.txt explains what is found.
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
LEFT_OUT = {"build", ".git", ".cache", "__pycache__", "boards", "docs", "radio", "radioctl", "readers"}
# The quickest first. They run in the copy of the project.
PROGRAMS = {
    "replay_library": ["fuzz/corpus/library"],
    "library_tests": ["--gtest_brief=1", "--gtest_fail_fast", "--gtest_filter=-TraceCatalogue*"],
    "bare_platform_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "abi_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "out_of_memory_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
    "exhaustive_fault_tests": ["--gtest_brief=1", "--gtest_fail_fast"],
}
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


def explained():
    return collections.Counter(line.strip() for line in lines_of("unseen.txt") if not line.startswith(" "))


# Where it is tried

def project_files():
    for folder, folders, files in os.walk(ROOT):
        folders[:] = sorted(set(folders) - LEFT_OUT)
        for file in sorted(files):
            yield (pathlib.Path(folder) / file).relative_to(ROOT)


def fingerprint():
    """Of everything that has a say in what is found."""
    state = hashlib.sha256()
    for path in project_files():
        if path.name != "unseen.txt":
            state.update(f"{path}\n".encode() + (ROOT / path).read_bytes())
    return state.hexdigest()


def bounded():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


def ends_well(command, seconds, folder=None):
    """Whether the program ends in time and gives 0. It, and what it starts, is a group of processes of its own."""
    with subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                          preexec_fn=bounded) as program:
        try:
            return program.wait(timeout=seconds) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(program.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass  # nobody is left of it


class Workshop:
    """A copy of the project, and a build of it."""

    def __init__(self, number):
        self.copy, self.build = FOLDER / f"{number}/copy", FOLDER / f"{number}/build"
        self.longest = {}

    def prepare(self):
        self.take_over_sources()
        subprocess.run(["cmake", "-S", self.copy, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                        "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w", "-DCMAKE_C_FLAGS_DEBUG=-O1 -w", "-DFREQUENCYHANDLER_RADIOCTL=OFF",
                        "-DFREQUENCYHANDLER_WERROR=OFF"], check=True, stdout=subprocess.DEVNULL)
        for program in PROGRAMS:
            built = subprocess.run(self.building(program), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if built.returncode != 0:
                raise RuntimeError(built.stdout)
            begin = time.monotonic()
            if not self.passes(program, 600):
                raise RuntimeError(f"without a mistake, {program} should end well")
            self.longest[program] = 10 + 10 * (time.monotonic() - begin)

    def passes(self, program, seconds):
        return ends_well([self.build / "bin" / program, *PROGRAMS[program]], seconds, self.copy)

    def take_over_sources(self):
        wanted = set(project_files())
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
        """The program that finds the change, or why there is none."""
        source = self.copy / LIBRARY / change.file
        right = source.read_text()
        source.write_text(change.applied(right))
        try:
            if not ends_well(self.building("frequencyhandler_objects"), 600):
                return NOT_BUILT
            for program in PROGRAMS:
                # A test that no longer compiles has found it as well.
                if not (ends_well(self.building(program), 600) and self.passes(program, self.longest[program])):
                    return program
            return NOT_FOUND
        finally:
            source.write_text(right)


class Workshops:
    def __init__(self, count):
        self.free = queue.Queue()
        with concurrent.futures.ThreadPoolExecutor(count) as pool:
            for workshop in pool.map(self.prepared, range(count)):
                self.free.put(workshop)

    @staticmethod
    def prepared(number):
        workshop = Workshop(number)
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

    PATH = FOLDER / "results.json"

    def __init__(self, mark):
        self.mark = mark
        self.finders = {}
        self.lock = threading.Lock()

    @staticmethod
    def last():
        if not Results.PATH.exists():
            return None, {}
        lines = Results.PATH.read_text().splitlines()
        return lines[0], {name: finder for name, finder in map(json.loads, lines[1:])}

    def begin(self):
        FOLDER.mkdir(parents=True, exist_ok=True)
        self.PATH.write_text(self.mark + "\n")

    def add(self, key, finder):
        with self.lock:
            self.finders[key] = finder
            with self.PATH.open("a") as file:
                file.write(json.dumps([key, finder]) + "\n")


def keyed(all_of_them):
    """Each change by its name; where several have one name, numbered."""
    seen = collections.Counter()
    found = {}
    for change in all_of_them:
        seen[change.name()] += 1
        found[f"{change.name()} #{seen[change.name()]}"] = change
    return found


def chosen(options, everything):
    keys = [key for key in everything if not options.text or any(text in key for text in options.text)]
    if options.again:
        last = Results.last()[1]
        keys = [key for key in keys if last.get(key) == NOT_FOUND]
    if options.sample and options.sample < len(keys):
        keys = [keys[index * len(keys) // options.sample] for index in range(options.sample)]
    return keys


def play(options, everything, keys):
    results = Results(fingerprint())
    last_mark, last = Results.last()
    results.begin()
    if options.resume and last_mark == results.mark:
        for key in keys:
            if key in last:
                results.add(key, last[key])
    waiting = [key for key in keys if key not in results.finders]
    workshops = Workshops(options.workers)

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


def check(everything):
    lost = explained() - collections.Counter(change.name() for change in everything.values())
    for name in lost.elements():
        print(f"explained in unseen.txt, and not there any more: {name}")
    return not lost


def summary(finders, everything, complete):
    """Says what was found out; gives whether it is well."""
    built = {key: finder for key, finder in finders.items() if finder != NOT_BUILT}
    names = collections.Counter(key.rpartition(" #")[0] for key, finder in built.items() if finder == NOT_FOUND)
    known = explained()
    missed, justified = sum(names.values()), sum((names & known).values())
    found = len(built) - missed

    print()
    files = collections.defaultdict(collections.Counter)
    for key, finder in finders.items():
        kind = "mistakes.txt" if isinstance(everything[key], Mistake) else everything[key].file
        files[kind]["cannot be built" if finder == NOT_BUILT else "not found" if finder == NOT_FOUND else "found"] += 1
    print(f"{'':56} {'found':>8} {'not found':>10} {'cannot be built':>16}")
    for file, counts in files.items():
        print(f"{file:56} {counts['found']:8} {counts['not found']:10} {counts['cannot be built']:16}")
    print("found by " + ", ".join(f"{program}: {count}" for program, count in
                                  collections.Counter(built.values()).most_common() if program != NOT_FOUND))
    for name in (names - known).elements():
        print(f"not found and not explained: {name}")
    # Of a part of the changes, nobody knows what else there is of one name.
    stale = list((known - names).elements()) if complete else []
    for name in stale:
        print(f"explained in unseen.txt, and found or not there any more: {name}")
    share = 100 * found / max(len(built), 1)
    print(f"{len(built)} changes: {found} found ({share:.2f} %), {missed} not found, of which {justified} explained; "
          f"{len(finders) - len(built)} could not be built")
    return missed == justified and not stale and (share >= 99 or not complete)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("text", nargs="*")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--continue", dest="resume", action="store_true")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    options = parser.parse_args()

    everything = keyed(all_changes(read_sources()))
    if options.check:
        return 0 if check(everything) else 1
    keys = chosen(options, everything)
    if options.list:
        print(*(key.rpartition(" #")[0] for key in keys), sep="\n")
        return 0
    finders = play(options, everything, keys)
    return 0 if summary(finders, everything, len(keys) == len(everything)) else 1


if __name__ == "__main__":
    sys.exit(main())
