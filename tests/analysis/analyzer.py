#!/usr/bin/env python3
"""Has GCC's analyzer look at every source of library and platform.

usage: analyzer.py COMPILER FINDINGS

Runs in the root of the project. Fails on something that the analyzer says and the file FINDINGS does not list, and on
something listed there that it does not say any more. There, a finding is a line "file | kind | how many | text of the
line", or "no line" where the analyzer names none, and the lines below, indented, say why it is wrong.
"""

import collections
import os
import pathlib
import re
import subprocess
import sys

CONTRACT = ["Platform/contract", "PlatformServices/FrequencyHandler/interface"]
INCLUDES = [f"-I{path}" for path in [*CONTRACT, "PlatformServices/FrequencyHandler/private", "Platform"]]
# The analyzer looks at more with some optimisation.
OPTIONS = ["-std=c++17", "-O1", "-fanalyzer", "-fdiagnostics-plain-output", "-fdiagnostics-path-format=none"]
WARNING = re.compile(r"(?P<file>[^:\s]+):(?:(?P<line>\d+):\d+:)? warning: .*\[-Wanalyzer-(?P<kind>[a-z-]+)\]$")


def findings(compiler, source):
    """Each finding in `source`, and what the compiler says."""
    command = [compiler, *OPTIONS, *INCLUDES, "-c", str(source), "-o", os.devnull]
    said = subprocess.run(command, check=True, stderr=subprocess.PIPE, text=True, env={**os.environ, "LC_ALL": "C"})
    for message in said.stderr.splitlines():
        match = WARNING.match(message)
        if match and match["line"]:
            text = pathlib.Path(match["file"]).read_text().splitlines()[int(match["line"]) - 1].strip()
            yield f"{match['file']} | {match['kind']}", text, message
        elif match:
            yield f"{source} | {match['kind']}", "no line", message


def main():
    compiler, list_of_findings = sys.argv[1:]
    counts = collections.Counter()
    messages = {}
    # Not the devices: they put texts together in nearly every function, each of which it takes for uninitialised.
    for root in ("PlatformServices", "Platform/standalone"):
        for source in sorted(pathlib.Path(root).rglob("*.cpp")):
            for what, text, message in findings(compiler, source):
                counts[what, text] += 1
                messages[what, text] = message
    found = {f"{what} | {count} | {text}": messages[what, text] for (what, text), count in counts.items()}
    lines = pathlib.Path(list_of_findings).read_text().splitlines()
    known = {line for line in lines if line and not line.startswith((" ", "#"))}

    for finding in found.keys() - known:
        print(f"not listed: {finding}\n    {found[finding]}")
    for finding in known - found.keys():
        print(f"listed in {list_of_findings} and not said any more: {finding}")
    return 0 if found.keys() == known else 1


if __name__ == "__main__":
    sys.exit(main())
