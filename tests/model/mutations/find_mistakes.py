#!/usr/bin/env python3
"""Makes each of the mistakes in mistakes.txt in a copy of the library and says whether the kept stories
(fuzz/corpus/library) or the lives in which each call goes wrong (exhaustive_fault_tests) find it.

    tests/model/mutations/find_mistakes.py [TEXT...]    those whose line contains one of the texts; all of them

Needs what the tests need, and takes about ten minutes for all. Ends with 1 if a mistake was not found.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[3]
PRIVATE = "PlatformServices/FrequencyHandler/private"
STORIES = "fuzz/corpus/library"
LONGEST = 120  # seconds; a mistake may have a program go on for good


def mistakes():
    for line in pathlib.Path(__file__).with_name("mistakes.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            yield line.split(" | ")


def build(directory):
    return subprocess.run(["cmake", "--build", directory, "--target", "replay_library", "exhaustive_fault_tests"],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def fails(*command):
    try:
        return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              timeout=LONGEST).returncode != 0
    except subprocess.TimeoutExpired:
        return True


def finders(directory):
    programs = {"stories": [directory / "bin/replay_library", ROOT / STORIES],
                "faults": [directory / "bin/exhaustive_fault_tests", "--gtest_brief=1"]}
    return [name for name, command in programs.items() if fails(*command)]


def try_all(copy, directory):
    missed = []
    for number, (name, before, after) in enumerate(mistakes(), 1):
        if len(sys.argv) > 1 and not any(text in f"{name} | {before} | {after}" for text in sys.argv[1:]):
            continue
        source = copy / PRIVATE / name
        right = source.read_text()
        if before not in right:
            sys.exit(f"{name} has no \"{before}\"")
        source.write_text(right.replace(before, after))
        built = build(directory)
        if built.returncode != 0:
            sys.exit(f"{name} with \"{after}\" cannot be built:\n{built.stdout}")
        found = finders(directory)
        print(f"{number:3} {'found by ' + ' and '.join(found) if found else 'NOT FOUND':28} {name}: {after}", flush=True)
        if not found:
            missed.append(number)
        source.write_text(right)
    return missed


with tempfile.TemporaryDirectory() as scratch:
    copy, directory = pathlib.Path(scratch, "copy"), pathlib.Path(scratch, "build")
    shutil.copytree(ROOT, copy, ignore=shutil.ignore_patterns("build", ".git", "corpus", "boards", "docs"))
    subprocess.run(["cmake", "-S", copy, "-B", directory, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                    "-DCMAKE_CXX_FLAGS=-O1", "-DFREQUENCYHANDLER_RADIOCTL=OFF"], check=True, stdout=subprocess.DEVNULL)
    if build(directory).returncode != 0 or finders(directory):
        sys.exit("without a mistake, all should be well")
    sys.exit(1 if try_all(copy, directory) else 0)
